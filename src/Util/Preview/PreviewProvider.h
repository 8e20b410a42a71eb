#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>
#include <Util/Preview/CompositionProvider.h>
#include <Util/Preview/ObjectView.h>

#include <QString>
#include <QStringList>

// The common part of the preview providers: a preview record of kind X owned by the
// provider, built at construction around stock pictures, and the composition the preview
// is drawn in. Every committed change of the record updates the composition (activated() or
// deactivated()) and, while a composition is set, asks for a restart of the preview.
template <class X>
class PreviewProvider : public CompositionProvider, public Preview::View<X>
{
public:
    using Record = Preview::Object<X>;

protected:
    // A new record drawn on the pictures at `stockImages` (paths), lasting `duration`
    // when the preview is a clip on a timeline (0 otherwise).
    PreviewProvider(QObject* parent, const QStringList& stockImages, Types::Time duration);
    // A copy of a ready record, owned by this provider.
    PreviewProvider(QObject* parent, const Record& ready);

    void changeTarget(const X* target);
    void changePosition(std::int64_t position);

    void previewChanged(const Record* preview, const Record* previous) override;
    using Preview::View<X>::previewChanged;
};

template <class X>
PreviewProvider<X>::PreviewProvider(QObject* parent, const QStringList& stockImages, Types::Time duration)
    : CompositionProvider(parent)
{
    auto* record = new Record;
    for (const QString& path : stockImages) {
        Media::File file;
        file.setPath(Types::String(path));
        record->identity.media.push_back(file);
    }
    record->identity.duration = duration;
    this->previewOwn(record);
}

template <class X>
PreviewProvider<X>::PreviewProvider(QObject* parent, const Record& ready) : CompositionProvider(parent)
{
    this->previewOwn(new Record(ready));
}

template <class X>
void PreviewProvider<X>::changeTarget(const X* target)
{
    auto chain = this->previewChange(this->preview());
    chain->target = target;
}

template <class X>
void PreviewProvider<X>::changePosition(std::int64_t position)
{
    auto chain = this->previewChange(this->preview());
    chain->position = position;
}

template <class X>
void PreviewProvider<X>::previewChanged(const Record* preview, const Record*)
{
    setComposition(preview->composition);
    if (preview->composition)
        emit restartRequested();
}

#define EDITORUTIL_PREVIEW_PROVIDER_EXTERN(X) extern template class EDITORUTIL_EXPORT PreviewProvider<X>;
EDITORUTIL_PREVIEW_INSTANTIATIONS(EDITORUTIL_PREVIEW_PROVIDER_EXTERN)
#undef EDITORUTIL_PREVIEW_PROVIDER_EXTERN
