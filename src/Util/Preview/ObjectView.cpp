#include <Util/Preview/ObjectView.h>

#define EDITORUTIL_PREVIEW_DEFINE(X)                                                                                   \
    template class Message::View<Preview::Object<X>>;                                                                  \
    template class Preview::Details::ObjectViewBase<Preview::Object<X>>;                                               \
    template class Preview::View<X>;
EDITORUTIL_PREVIEW_INSTANTIATIONS(EDITORUTIL_PREVIEW_DEFINE)
#undef EDITORUTIL_PREVIEW_DEFINE
