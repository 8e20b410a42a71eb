// Quiz descriptions dropped or pasted into the editor: a session or a question list that is
// read must be written back to text that reads the same.
#include "FuzzMain.h"

#include <Util/Import/QuizUtils.h>

FUZZ_INIT

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace Quiz::Utils;
    const QByteArray json(reinterpret_cast<const char*>(data), int(size));
    QString error;
    if (const auto session = read(json, &error))
        FUZZ_CHECK(read(write(*session)) == *session);
    else
        FUZZ_CHECK(!error.isEmpty());
    if (const auto questions = readQuestions(json))
        FUZZ_CHECK(readQuestions(writeQuestions(*questions)).has_value());
    return 0;
}
