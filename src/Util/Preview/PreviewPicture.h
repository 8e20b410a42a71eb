#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>
#include <Util/Preview/ObjectView.h>

#include <QImage>
#include <QSize>

// The still picture of a preview record the way the preview player shows it, `size` large:
// the record's stock pictures with its target applied. Without a target the stock picture is
// shown as it is; a stock picture that cannot be read gives a null image (and a log line).
//
//   EffectPreviewProvider effects(panel);
//   effects.setTarget(&sepia);
//   label->setPixmap(QPixmap::fromImage(PreviewPicture::draw(*effects.preview(), {480, 270})));
namespace PreviewPicture {

// Colour filters ("grayscale", "sepia", "warm", "cool", "invert") and video effects ("blur",
// "mirror", "pixelate", "vignette"); other effects leave the picture as it is. The parameter
// "strength" (0 to 1, default 1) mixes the result with the picture.
EDITORUTIL_EXPORT QImage draw(const Preview::Object<Effect::Object>& preview, QSize size);
// Half way through: "crossfade", "wipe", "slide", "dip" (through black) from the first stock
// picture to the second; other transitions cut half way.
EDITORUTIL_EXPORT QImage draw(const Preview::Object<Transition::Object>& preview, QSize size);
// Titles and callouts: each item's text placed by its transform over the middle of the picture.
EDITORUTIL_EXPORT QImage draw(const Preview::Object<Overlay::Preset>& preview, QSize size);
// The first question and its answers on a card, the correct answers ticked.
EDITORUTIL_EXPORT QImage draw(const Preview::Object<Quiz::Preset>& preview, QSize size);
// The value of the animation at the record's position: with one stock picture (pan and zoom)
// the picture seen through that transform, with two (animation) the second picture, a quarter
// of the frame large, placed by it over the first. Transforms act about the frame's middle.
EDITORUTIL_EXPORT QImage draw(const Preview::Object<Animation::TransformationItem>& preview, QSize size);

} // namespace PreviewPicture
