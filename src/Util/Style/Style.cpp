#include <Util/Style.h>

#include <glog/logging.h>

#include <QApplication>
#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>

namespace Style {

QString baseSheet()
{
    QFile file(QStringLiteral(":/EditorUtil/style/base.qss"));
    if (!file.open(QIODevice::ReadOnly)) {
        LOG(ERROR) << "Style::baseSheet: the library's base sheet is missing from its resources";
        return QString();
    }
    return QString::fromUtf8(file.readAll());
}

QMap<QString, QString> themeVariables(Customization::Theme theme, const QColor& accent)
{
    const bool dark = theme == Customization::Theme::Dark;
    const QColor shownAccent = accent.isValid() ? accent : QColor(0x2a, 0x82, 0xda);
    return {
        {QStringLiteral("accent"), shownAccent.name()},
        // Dark text on a bright accent, by perceived brightness.
        {QStringLiteral("accentText"),
         QLatin1String(0.299 * shownAccent.redF() + 0.587 * shownAccent.greenF() + 0.114 * shownAccent.blueF() > 0.6
                           ? "#000000"
                           : "#ffffff")},
        {QStringLiteral("window"), QLatin1String(dark ? "#2b2b2b" : "#f0f0f0")},
        {QStringLiteral("windowText"), QLatin1String(dark ? "#e6e6e6" : "#202020")},
        {QStringLiteral("base"), QLatin1String(dark ? "#1e1e1e" : "#ffffff")},
        {QStringLiteral("text"), QLatin1String(dark ? "#f0f0f0" : "#000000")},
        {QStringLiteral("border"), QLatin1String(dark ? "#474747" : "#b4b4b4")},
        {QStringLiteral("disabledText"), QLatin1String(dark ? "#7a7a7a" : "#9a9a9a")},
        {QStringLiteral("error"), QLatin1String(dark ? "#ff6b6b" : "#d32f2f")},
    };
}

QString substitute(const QString& sheet, const QMap<QString, QString>& variables, QString* error)
{
    static const QRegularExpression variable(QStringLiteral("@([A-Za-z][A-Za-z0-9_]*)"));
    QString result;
    result.reserve(sheet.size());
    int from = 0;
    auto it = variable.globalMatch(sheet);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        const auto value = variables.constFind(match.captured(1));
        if (value == variables.constEnd()) {
            const int line = sheet.leftRef(match.capturedStart()).count(QLatin1Char('\n')) + 1;
            const QString message = QCoreApplication::translate("Style", "Unknown style variable \"%1\" on line %2")
                                        .arg(match.captured(0))
                                        .arg(line);
            LOG(ERROR) << "Style::substitute: " << message.toStdString() << "; the sheet is not used";
            if (error)
                *error = message;
            return QString();
        }
        result += sheet.midRef(from, match.capturedStart() - from);
        result += *value;
        from = match.capturedEnd();
    }
    result += sheet.midRef(from);
    if (error)
        error->clear();
    return result;
}

bool apply(const QString& sheet, const Customization& customization, QString* error)
{
    auto* application = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (!application) {
        LOG(ERROR) << "Style::apply: no QApplication to style";
        return false;
    }
    QString problem;
    const QString assembled =
        substitute(sheet, themeVariables(customization.theme(), customization.accentColor()), &problem);
    if (error)
        *error = problem;
    if (!problem.isEmpty() || application->styleSheet() == assembled)
        return false;
    application->setStyleSheet(assembled);
    return true;
}

} // namespace Style
