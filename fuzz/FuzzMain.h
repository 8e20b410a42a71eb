#pragma once

// Shared start of the harnesses: a GUI application on the offscreen platform (pictures need
// one), settings in a scratch store, and library log lines kept off the fuzzer's output.

#include <EditorSettings/Settings.h>

#include <QDir>
#include <QGuiApplication>
#include <QStandardPaths>

#include <glog/logging.h>

#include <cstddef>
#include <cstdint>

inline void startFuzzApplication()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    FLAGS_minloglevel = google::GLOG_FATAL;
    static QGuiApplication app(argc, argv);
    Settings::useStoreFile(QDir::temp().filePath(QStringLiteral("editorutil-fuzz-%1.ini").arg(qApp->applicationPid())));
}

#define FUZZ_INIT                                                                                                      \
    extern "C" int LLVMFuzzerInitialize(int*, char***)                                                                 \
    {                                                                                                                  \
        startFuzzApplication();                                                                                        \
        return 0;                                                                                                      \
    }

// A broken promise of the library: libFuzzer records the input as a crash.
#define FUZZ_CHECK(condition)                                                                                          \
    do {                                                                                                               \
        if (!(condition))                                                                                              \
            __builtin_trap();                                                                                          \
    } while (false)
