#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace Scripted {
class ScriptedStrategy;
}

namespace Sandbox {

class SandboxWindow;

// The scripted tour of the sandbox: each step acts on the window through real input events
// or its menu operations, checks what a user would see, saves a screenshot and prints one line
// ("ok"/"FAILED", the step, what was checked, the screenshot). The samples come from
// `dataFolder`; the project and moved files live in a scratch folder.
class Tour
{
public:
    Tour(SandboxWindow& window, Scripted::ScriptedStrategy& dialogs, const QString& dataFolder,
         const QString& shotsFolder, const QString& workFolder);
    // The command of a second start of the editor (program and options, the file is appended)
    // that hands its file to this tour's window; without one, that step fails.
    void setSecondStart(const QString& program, const QStringList& arguments);
    // Runs every step; 0 when all of them did what they should, else 1.
    int run();

private:
    bool step(const QString& name, const std::function<bool(QString& detail)>& action);
    QString shoot(const QString& name);

    SandboxWindow& m_window;
    Scripted::ScriptedStrategy& m_dialogs;
    QString m_data;
    QString m_shots;
    QString m_work;
    int m_number = 0;
    int m_failures = 0;
    QString m_shotOverride;
    QString m_program;
    QStringList m_arguments;
};

} // namespace Sandbox
