#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>

#include <cstdint>

namespace Dravik {
namespace Proc {
class ProcessingError;
}
} // namespace Dravik

namespace Error {

// The operation in which a processing error arose.
enum Context : std::int32_t
{
    Export = 0,
    Capture = 1,
    Analyze = 2,
    Stabilization = 3,
    FreezeFrame = 4
};

// The user's message for a processing error, worded for the operation (rich text; may hold
// a support or purchase link). Some combinations give an empty text (an Export error of a
// code without a message of its own); a context outside Export..FreezeFrame gives
// "An unknown error has occurred".
EDITORUTIL_EXPORT Types::String describeTranscodingError(const Dravik::Proc::ProcessingError& error, Context context);

} // namespace Error
