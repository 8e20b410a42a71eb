#include <Util/Translations.h>

#include <glog/logging.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTranslator>

#include <memory>

namespace Translations {

namespace {

const char kLeaf[] = "EditorUtil/translations";

QString& chosenFolder()
{
    static QString folder;
    return folder;
}

std::unique_ptr<QTranslator>& installed()
{
    static std::unique_ptr<QTranslator> translator;
    return translator;
}

QStringList folders()
{
    QStringList result;
    if (!chosenFolder().isEmpty())
        result << chosenFolder();
    else if (!qEnvironmentVariableIsEmpty("EDITORUTIL_TRANSLATIONS_DIR"))
        result << qEnvironmentVariable("EDITORUTIL_TRANSLATIONS_DIR");
    result << QCoreApplication::applicationDirPath() + QLatin1String("/../share/") + QLatin1String(kLeaf)
           << QStringLiteral(EDITORUTIL_BUILD_TRANSLATIONS_DIR) << QStringLiteral(EDITORUTIL_INSTALL_TRANSLATIONS_DIR);
    for (const QString& data : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation))
        result << data + QLatin1Char('/') + QLatin1String(kLeaf);
    return result;
}

} // namespace

void setCatalogueFolder(const QString& folder) { chosenFolder() = folder; }

QString catalogueFile(const QLocale& locale)
{
    if (locale.language() == QLocale::C || locale.language() == QLocale::English)
        return QString();
    const QString name =
        QLatin1String("editorutil_") + locale.name().section(QLatin1Char('_'), 0, 0) + QLatin1String(".qm");
    for (const QString& folder : folders()) {
        const QString file = QDir(folder).filePath(name);
        if (QFileInfo::exists(file))
            return QDir::cleanPath(file);
    }
    return QString();
}

bool install(const QLocale& locale)
{
    if (installed()) {
        QCoreApplication::removeTranslator(installed().get());
        installed().reset();
    }
    const QString file = catalogueFile(locale);
    if (file.isEmpty()) {
        if (locale.language() != QLocale::C && locale.language() != QLocale::English)
            LOG(ERROR) << "Translations::install: no catalogue for " << locale.name().toStdString()
                       << "; the original texts stay";
        return false;
    }
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(file) || !QCoreApplication::installTranslator(translator.get())) {
        LOG(ERROR) << "Translations::install: cannot load " << file.toStdString() << "; the original texts stay";
        return false;
    }
    installed() = std::move(translator);
    return true;
}

} // namespace Translations
