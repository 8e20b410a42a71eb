#pragma once

#include <Util/EditorUtilExport.h>

#include <QDialog>
#include <QFutureWatcher>
#include <QMap>
#include <QStringList>

#include <atomic>
#include <memory>

class QFrame;
class QLabel;
class QProgressBar;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

// Helps the user re-locate many lost media files at once: they name a folder, and its whole
// tree is searched (once, on a worker thread, cancellable) for files with the lost names.
// When a name occurs several times, the copy whose folders match most of the lost path's
// folders (from the innermost outwards) wins. A row can also be located by hand with a
// double click. Skip (or closing) keeps what was found so far; foundFiles() maps each
// found old path to its new path, both cleaned.
class EDITORUTIL_EXPORT MissingFilesDialog : public QDialog
{
    Q_OBJECT
public:
    enum class State
    {
        WaitingForFolder,
        Searching,
        Finished
    };
    Q_ENUM(State)

    explicit MissingFilesDialog(const QStringList& missingFiles, QWidget* parent = nullptr);
    ~MissingFilesDialog() override;

    QMap<QString, QString> foundFiles() const { return m_found; }
    // Lost files not found yet, cleaned, in the order given.
    QStringList remainingFiles() const;
    State state() const { return m_state; }
    QString searchedFolder() const { return m_folder; }

    // Searches the tree of `folder` (what "Specify folder" does once a folder is chosen, and
    // the search button repeats). Ignored while a search runs or when nothing is left.
    void searchFolder(const QString& folder);
    // Stops a running search; its results are dropped and the dialog waits for a folder.
    void cancelSearch();

    // The search itself: one walk of the tree of `root` matching the lost files by name.
    // Returns lost path -> found path (cleaned). Stops early when `cancel` becomes true.
    static QMap<QString, QString> searchFolderTree(const QString& root, const QStringList& lostFiles,
                                                   const std::atomic<bool>* cancel = nullptr);

Q_SIGNALS:
    void stateChanged(MissingFilesDialog::State state);
    // A search ran to its end and found `count` more files.
    void searchFinished(int count);

private:
    void setState(State state);
    void chooseFolder();
    void skip();
    void onSearchDone();
    void locateByHand(QTreeWidgetItem* item);
    void record(const QString& oldPath, const QString& newPath);
    void updateTexts();
    void markActive(QPushButton* button);

    QStringList m_missing;
    QMap<QString, QString> m_found;
    State m_state = State::WaitingForFolder;
    QString m_folder;

    std::shared_ptr<std::atomic<bool>> m_cancel;
    QFutureWatcher<QMap<QString, QString>> m_watcher;

    QTreeWidget* m_filesView;
    QFrame* m_pathFrame;
    QLabel* m_pathLabel;
    QPushButton* m_searchButton;
    QLabel* m_nameLabel;
    QFrame* m_progressFrame;
    QProgressBar* m_progressGif;
    QPushButton* m_specifyFolderButton;
    QPushButton* m_skipButton;
    QPushButton* m_cancelButton;
};
