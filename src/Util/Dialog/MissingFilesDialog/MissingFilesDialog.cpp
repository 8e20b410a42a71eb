#include "MissingFilesDialog.h"

#include <Util/Detail/FileWalk.h>
#include <Util/Filesystem.h>

#include <QFileDialog>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <QtConcurrent/QtConcurrentRun>

#include <QHash>

namespace {

QString nameKey(const QString& fileName)
{
#if defined(Q_OS_WIN) || defined(Q_OS_MACOS)
    return fileName.toLower();
#else
    return fileName;
#endif
}

QStringList folderParts(const QString& path)
{
    static const QRegularExpression separators(QStringLiteral("(\\\\|/)"));
    QStringList parts = path.split(separators, Qt::SkipEmptyParts);
    if (!parts.isEmpty())
        parts.removeLast(); // the file name
    return parts;
}

// How many folders, from the innermost outwards, the two paths share.
int commonTail(const QStringList& a, const QStringList& b)
{
    int n = 0;
    for (int i = a.size() - 1, j = b.size() - 1; i >= 0 && j >= 0; --i, --j, ++n)
        if (nameKey(a.at(i)) != nameKey(b.at(j)))
            break;
    return n;
}

const int kNameColumn = 0;
const int kPathColumn = 1;

} // namespace

QMap<QString, QString> MissingFilesDialog::searchFolderTree(const QString& root, const QStringList& lostFiles,
                                                            const std::atomic<bool>* cancel)
{
    struct Lost
    {
        QString path;
        QStringList folders;
        QString best;
        int score = -1;
    };
    std::vector<Lost> lost;
    lost.reserve(static_cast<std::size_t>(lostFiles.size()));
    QHash<QString, std::vector<std::size_t>> byName;
    for (const QString& file : lostFiles) {
        const QString cleaned = Filesystem::cleanPath(file);
        const QString name = QFileInfo(cleaned).fileName();
        if (name.isEmpty())
            continue;
        byName[nameKey(name)].push_back(lost.size());
        lost.push_back({cleaned, folderParts(cleaned), QString(), -1});
    }

    QMap<QString, QString> found;
    if (lost.empty() || !QFileInfo(root).isDir())
        return found;

    Filesystem::Detail::walkFiles(root, true, [&](const QString& filePath, const QString& fileName) {
        if (cancel && cancel->load(std::memory_order_relaxed))
            return false;
        const auto it = byName.constFind(nameKey(fileName));
        if (it == byName.constEnd())
            return true;
        const QStringList candidateFolders = folderParts(filePath);
        for (std::size_t index : it.value()) {
            Lost& entry = lost[index];
            const int score = commonTail(entry.folders, candidateFolders);
            if (score > entry.score) {
                entry.score = score;
                entry.best = filePath;
            }
        }
        return true;
    });
    if (cancel && cancel->load())
        return {};
    for (const Lost& entry : lost)
        if (!entry.best.isEmpty())
            found.insert(entry.path, Filesystem::cleanPath(entry.best));
    return found;
}

MissingFilesDialog::MissingFilesDialog(const QStringList& missingFiles, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint)
{
    qRegisterMetaType<MissingFilesDialog::State>();
    setObjectName(QStringLiteral("MissingFilesDialog"));
    setModal(true);
    setWindowTitle(tr("Missing files"));
    for (const QString& file : missingFiles) {
        const QString cleaned = Filesystem::cleanPath(file);
        if (!cleaned.isEmpty() && !m_missing.contains(cleaned))
            m_missing << cleaned;
    }

    auto* content = new QFrame(this);
    content->setObjectName(QStringLiteral("contentFrame"));
    auto* header = new QLabel(tr("Please, specify the folder with lost files"), content);
    header->setObjectName(QStringLiteral("headerLabel"));
    auto* description = new QLabel(
        tr("Your files were moved or deleted, please specify its new location to restore your project."), content);
    description->setObjectName(QStringLiteral("descriptionLabel"));
    description->setWordWrap(true);

    m_filesView = new QTreeWidget(content);
    m_filesView->setObjectName(QStringLiteral("filesView"));
    m_filesView->setColumnCount(2);
    m_filesView->setHeaderLabels({tr("Name"), tr("Old path")});
    m_filesView->setRootIsDecorated(false);
    m_filesView->header()->setStretchLastSection(true);
    for (const QString& path : qAsConst(m_missing)) {
        auto* item = new QTreeWidgetItem(m_filesView);
        item->setText(kNameColumn, QFileInfo(path).fileName());
        item->setText(kPathColumn, Filesystem::cleanPath(QFileInfo(path).path()));
        item->setData(kNameColumn, Qt::UserRole, path);
        item->setToolTip(kPathColumn, path);
    }

    m_pathFrame = new QFrame(content);
    m_pathFrame->setObjectName(QStringLiteral("pathFrame"));
    m_pathLabel = new QLabel(m_pathFrame);
    m_pathLabel->setObjectName(QStringLiteral("pathLabel"));
    m_searchButton = new QPushButton(tr("Search again"), m_pathFrame);
    m_searchButton->setObjectName(QStringLiteral("searchButton"));
    auto* pathLayout = new QHBoxLayout(m_pathFrame);
    pathLayout->setContentsMargins(0, 0, 0, 0);
    pathLayout->addWidget(m_pathLabel, 1);
    pathLayout->addWidget(m_searchButton);
    m_pathFrame->hide();

    m_nameLabel = new QLabel(content);
    m_nameLabel->setObjectName(QStringLiteral("nameLabel"));

    m_progressFrame = new QFrame(content);
    m_progressFrame->setObjectName(QStringLiteral("progressFrame"));
    m_progressGif = new QProgressBar(m_progressFrame);
    m_progressGif->setObjectName(QStringLiteral("progressGif"));
    m_progressGif->setRange(0, 0); // busy indicator
    m_progressGif->setTextVisible(false);
    auto* progressLabel = new QLabel(tr("File search in progress..."), m_progressFrame);
    progressLabel->setObjectName(QStringLiteral("progressLabel"));
    auto* progressLayout = new QHBoxLayout(m_progressFrame);
    progressLayout->setContentsMargins(0, 0, 0, 0);
    progressLayout->addWidget(m_progressGif);
    progressLayout->addWidget(progressLabel, 1);
    m_progressFrame->hide();

    auto* buttons = new QFrame(content);
    buttons->setObjectName(QStringLiteral("buttonsFrame"));
    m_specifyFolderButton = new QPushButton(tr("Specify folder"), buttons);
    m_specifyFolderButton->setObjectName(QStringLiteral("specifyFolderButton"));
    m_skipButton = new QPushButton(tr("Skip"), buttons);
    m_skipButton->setObjectName(QStringLiteral("skipButton"));
    m_cancelButton = new QPushButton(tr("Cancel Search"), buttons);
    m_cancelButton->setObjectName(QStringLiteral("cancelButton"));
    m_cancelButton->hide();
    auto* buttonsLayout = new QHBoxLayout(buttons);
    buttonsLayout->setContentsMargins(0, 0, 0, 0);
    buttonsLayout->addStretch(1);
    buttonsLayout->addWidget(m_specifyFolderButton);
    buttonsLayout->addWidget(m_cancelButton);
    buttonsLayout->addWidget(m_skipButton);

    auto* layout = new QVBoxLayout(content);
    layout->addWidget(header);
    layout->addWidget(description);
    layout->addWidget(m_filesView, 1);
    layout->addWidget(m_pathFrame);
    layout->addWidget(m_nameLabel);
    layout->addWidget(m_progressFrame);
    layout->addWidget(buttons);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(content);

    connect(m_specifyFolderButton, &QPushButton::clicked, this, &MissingFilesDialog::chooseFolder);
    connect(m_searchButton, &QPushButton::clicked, this, [this] { searchFolder(m_folder); });
    connect(m_skipButton, &QPushButton::clicked, this, &MissingFilesDialog::skip);
    connect(m_cancelButton, &QPushButton::clicked, this, &MissingFilesDialog::cancelSearch);
    connect(m_filesView, &QTreeWidget::itemDoubleClicked, this, &MissingFilesDialog::locateByHand);
    connect(&m_watcher, &QFutureWatcher<QMap<QString, QString>>::finished, this, &MissingFilesDialog::onSearchDone);

    m_specifyFolderButton->setDefault(true);
    markActive(m_specifyFolderButton);
    updateTexts();
}

MissingFilesDialog::~MissingFilesDialog()
{
    if (m_cancel)
        m_cancel->store(true);
    m_watcher.waitForFinished();
}

QStringList MissingFilesDialog::remainingFiles() const
{
    QStringList remaining;
    for (const QString& path : m_missing)
        if (!m_found.contains(path))
            remaining << path;
    return remaining;
}

void MissingFilesDialog::searchFolder(const QString& folder)
{
    const QStringList lost = remainingFiles();
    if (m_state == State::Searching || lost.isEmpty() || folder.isEmpty())
        return;
    m_folder = Filesystem::cleanPath(folder);
    m_pathLabel->setText(m_folder);
    m_pathFrame->show();
    m_cancel = std::make_shared<std::atomic<bool>>(false);
    setState(State::Searching);
    const QString root = m_folder;
    const std::shared_ptr<std::atomic<bool>> cancel = m_cancel;
    m_watcher.setFuture(QtConcurrent::run([root, lost, cancel] { return searchFolderTree(root, lost, cancel.get()); }));
}

void MissingFilesDialog::cancelSearch()
{
    if (m_state != State::Searching)
        return;
    m_cancel->store(true);
    setState(State::WaitingForFolder);
}

void MissingFilesDialog::onSearchDone()
{
    // A cancelled search reports too: its flag tells it apart from the current one.
    if (!m_cancel || m_cancel->load() || m_state != State::Searching)
        return;
    const QMap<QString, QString> result = m_watcher.result();
    for (auto it = result.cbegin(); it != result.cend(); ++it)
        record(it.key(), it.value());
    Q_EMIT searchFinished(result.size());
    if (remainingFiles().isEmpty()) {
        setState(State::Finished);
        accept();
    } else {
        setState(State::WaitingForFolder);
    }
}

void MissingFilesDialog::chooseFolder()
{
    const QString start = m_folder.isEmpty() ? QFileInfo(m_missing.value(0)).absolutePath() : m_folder;
    const QString folder = QFileDialog::getExistingDirectory(
        this, tr("Open Directory"), start, QFileDialog::ShowDirsOnly | QFileDialog::HideNameFilterDetails);
    if (!folder.isEmpty())
        searchFolder(folder);
}

void MissingFilesDialog::skip()
{
    if (m_state == State::Searching)
        cancelSearch();
    accept();
}

void MissingFilesDialog::locateByHand(QTreeWidgetItem* item)
{
    if (!item || m_state == State::Searching)
        return;
    const QString oldPath = item->data(kNameColumn, Qt::UserRole).toString();
    const QString newPath = Filesystem::findMissingFile(oldPath);
    if (newPath.isEmpty())
        return;
    record(oldPath, newPath);
    if (remainingFiles().isEmpty()) {
        setState(State::Finished);
        accept();
    }
}

void MissingFilesDialog::record(const QString& oldPath, const QString& newPath)
{
    m_found.insert(oldPath, Filesystem::cleanPath(newPath));
    for (int i = 0; i < m_filesView->topLevelItemCount(); ++i) {
        if (m_filesView->topLevelItem(i)->data(kNameColumn, Qt::UserRole).toString() == oldPath) {
            delete m_filesView->takeTopLevelItem(i);
            break;
        }
    }
    updateTexts();
}

void MissingFilesDialog::setState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    const bool searching = state == State::Searching;
    m_progressFrame->setVisible(searching);
    m_cancelButton->setVisible(searching);
    m_specifyFolderButton->setEnabled(!searching);
    m_searchButton->setEnabled(!searching);
    m_filesView->setEnabled(!searching);
    markActive(searching ? m_cancelButton : m_specifyFolderButton);
    updateTexts();
    Q_EMIT stateChanged(state);
}

void MissingFilesDialog::updateTexts()
{
    const int total = m_missing.size();
    const int found = m_found.size();
    m_nameLabel->setText(found == 0 ? tr("%n file(s) not found", nullptr, total)
                                    : tr("%1 of %2 files found").arg(found).arg(total));
}

void MissingFilesDialog::markActive(QPushButton* button)
{
    for (QPushButton* b : {m_specifyFolderButton, m_skipButton, m_cancelButton, m_searchButton}) {
        b->setProperty("activeButton", b == button);
        b->style()->unpolish(b);
        b->style()->polish(b);
    }
}
