#include <Util/Interfaces/EditorSettings.h>
#include <Util/Preview/AnimationPreviewProvider.h>
#include <Util/Preview/CalloutPreviewProvider.h>
#include <Util/Preview/ColorFilterPreviewProvider.h>
#include <Util/Preview/EffectPreviewProvider.h>
#include <Util/Preview/ImportPreviewProvider.h>
#include <Util/Preview/PanZoomPreviewProvider.h>
#include <Util/Preview/QuizPreviewProvider.h>
#include <Util/Preview/TitlePreviewProvider.h>
#include <Util/Preview/TransitionPreviewProvider.h>

#define EDITORUTIL_PREVIEW_PROVIDER_DEFINE(X) template class PreviewProvider<X>;
EDITORUTIL_PREVIEW_INSTANTIATIONS(EDITORUTIL_PREVIEW_PROVIDER_DEFINE)
#undef EDITORUTIL_PREVIEW_PROVIDER_DEFINE

EffectPreviewProvider::EffectPreviewProvider(QObject* parent)
    : PreviewProvider(parent, QStringList{Settings::effectPreviewImagePath()}, 0)
{}

EffectPreviewProvider::~EffectPreviewProvider() = default;

void EffectPreviewProvider::setTarget(const Effect::Object* target) { changeTarget(target); }

ColorFilterPreviewProvider::ColorFilterPreviewProvider(QObject* parent)
    : PreviewProvider(parent, QStringList{Settings::effectPreviewImagePath()}, 0)
{}

ColorFilterPreviewProvider::ColorFilterPreviewProvider(const Preview::Object<Effect::Object>& preview, QObject* parent)
    : PreviewProvider(parent, preview)
{}

ColorFilterPreviewProvider::~ColorFilterPreviewProvider() = default;

void ColorFilterPreviewProvider::setTarget(const Effect::Object* target) { changeTarget(target); }

TransitionPreviewProvider::TransitionPreviewProvider(QObject* parent)
    : PreviewProvider(parent,
                      QStringList{Settings::transitionPreviewImageAPath(), Settings::transitionPreviewImageBPath()}, 0)
{}

TransitionPreviewProvider::~TransitionPreviewProvider() = default;

void TransitionPreviewProvider::setTarget(const Transition::Object* target) { changeTarget(target); }

TitlePreviewProvider::TitlePreviewProvider(QObject* parent)
    : PreviewProvider(parent, QStringList{Settings::titlePreviewImagePath()},
                      Timeline::Clip::DEFAULT_TITLE_CLIP_DURATION)
{}

TitlePreviewProvider::~TitlePreviewProvider() = default;

CalloutPreviewProvider::CalloutPreviewProvider(QObject* parent)
    : PreviewProvider(parent, QStringList{Settings::calloutPreviewImagePath()},
                      Timeline::Clip::DEFAULT_CALLOUT_CLIP_DURATION)
{}

CalloutPreviewProvider::~CalloutPreviewProvider() = default;

QuizPreviewProvider::QuizPreviewProvider(QObject* parent)
    : PreviewProvider(parent, QStringList{Settings::quizPreviewImagePath()}, Timeline::Clip::DEFAULT_QUIZ_CLIP_DURATION)
{}

QuizPreviewProvider::~QuizPreviewProvider() = default;

PanZoomPreviewProvider::PanZoomPreviewProvider(QObject* parent)
    : PreviewProvider(parent, QStringList{Settings::panZoomPreviewImagePath()}, 0)
{}

PanZoomPreviewProvider::~PanZoomPreviewProvider() = default;

void PanZoomPreviewProvider::setTarget(const Animation::TransformationItem* target) { changeTarget(target); }

AnimationPreviewProvider::AnimationPreviewProvider(QObject* parent)
    : PreviewProvider(
        parent, QStringList{Settings::animationBackgroundPreviewImagePath(), Settings::animationIconPreviewImagePath()},
        0)
{}

AnimationPreviewProvider::~AnimationPreviewProvider() = default;

void AnimationPreviewProvider::setTarget(const Animation::TransformationItem* item, std::int64_t position)
{
    changePosition(position);
    changeTarget(item);
}

ImportPreviewProvider::ImportPreviewProvider(QObject* parent) : PreviewProvider(parent, QStringList(), 0) {}

ImportPreviewProvider::~ImportPreviewProvider() = default;
