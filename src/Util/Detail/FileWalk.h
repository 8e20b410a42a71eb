#pragma once

// Internal to the library: the one folder walk behind parseDirectory and the missing-files
// search.

#include <QDir>
#include <QDirIterator>
#include <QSet>
#include <QString>
#include <QStringList>

namespace Filesystem {
namespace Detail {

// Decides by file name whether a file is wanted. Filters of the plain form "*.ext" become
// one hash lookup of the lower-case suffix; any other wildcard falls back to QDir::match.
class NameMatcher
{
public:
    explicit NameMatcher(const QStringList& nameFilters);
    static NameMatcher forSuffixes(const QSet<QString>& lowerCaseSuffixes);

    bool matches(const QString& fileName) const;
    bool matchesEverything() const { return m_everything; }

private:
    NameMatcher() = default;

    QSet<QString> m_suffixes;
    QStringList m_patterns;
    bool m_everything = false;
};

// Calls visit(filePath, fileName) for every file under `root` (sub-folders too when
// `recursive`), hidden files included, symbolic links to folders not followed. Stops early
// when visit returns false.
template <class Visit>
void walkFiles(const QString& root, bool recursive, Visit&& visit)
{
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    recursive ? QDirIterator::Subdirectories : QDirIterator::NoIteratorFlags);
    while (it.hasNext()) {
        const QString path = it.next();
        if (!visit(path, it.fileName()))
            return;
    }
}

} // namespace Detail
} // namespace Filesystem
