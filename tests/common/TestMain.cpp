#include <QApplication>
#include <QStandardPaths>

#include <glog/logging.h>
#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    // Widgets and scenes need a platform plugin; tests never open a window on a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Settings and standard paths of tests never touch the user's own.
    QStandardPaths::setTestModeEnabled(true);

    if (!google::IsGoogleLoggingInitialized())
        google::InitGoogleLogging(argv[0]);
    FLAGS_logtostderr = false;
    FLAGS_stderrthreshold = google::GLOG_FATAL;

    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("EditorUtilTests"));
    QCoreApplication::setApplicationName(QStringLiteral("EditorUtilTests"));

    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
