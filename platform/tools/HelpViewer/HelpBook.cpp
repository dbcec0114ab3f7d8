#include "HelpBook.h"

#include "CoreFoundation/Runtime.h"

#include <CoreFoundation/CFBundle.h>

#include <QDirIterator>
#include <QFileInfo>
#include <QStringDecoder>
#include <QTextBlock>
#include <QTextDocument>
#include <algorithm>
#include <climits>

namespace {

constexpr qint64 kLargestFile = qint64 { 16 } * 1024 * 1024;

/// @return the host path that a URL names, "" for null.
QString PathOf(CFURLRef url)
{
    std::string path(PATH_MAX, '\0');
    if (url == nullptr
        || !CFURLGetFileSystemRepresentation(
            url, true, reinterpret_cast<UInt8*>(path.data()), static_cast<CFIndex>(path.size())))
        return {};
    return QFile::decodeName(path.c_str());
}

/// The path without links and dots; "" when nothing is there.
QString Canonical(const QString& path) { return QFileInfo(path).canonicalFilePath(); }

bool IsBelow(const QString& path, const QString& folder) { return path.startsWith(folder + u'/'); }

/// @return the text for the key in the user's language; "" when there is none.
QString TextFor(CFBundleRef bundle, CFStringRef key)
{
    return QString::fromStdString(cf::TextOf(CFBundleGetValueForInfoDictionaryKey(bundle, key)));
}

QString TitleOf(CFBundleRef bundle, const QString& folder)
{
    for (const CFStringRef key : { CFSTR("HPDBookTitle"), kCFBundleNameKey }) {
        QString title = TextFor(bundle, key).simplified();
        if (!title.isEmpty())
            return title;
    }
    return QFileInfo(folder).completeBaseName();
}

/// @param page a path below `resources`. @return the folder of the page's language; `resources` itself when
/// the page is for all languages.
QString LanguageFolder(const QString& page, const QString& resources)
{
    const QString first = page.mid(resources.size() + 1).section(u'/', 0, 0);
    return first.endsWith(".lproj") ? resources + u'/' + first : resources;
}

/// A page that is only read, so that nothing it refers to is loaded.
class ParsedPage : public QTextDocument {
public:
    QVariant loadResource(int, const QUrl&) override { return {}; }
};

/// Whether a place in the page has the name, as a browser sees it.
bool HasAnchor(const QString& html, const QString& anchor)
{
    if (!html.contains(anchor))
        return false; // spares reading most pages
    ParsedPage page;
    page.setUndoRedoEnabled(false);
    page.setHtml(html);
    for (QTextBlock block = page.begin(); block.isValid(); block = block.next()) {
        for (auto fragment = block.begin(); !fragment.atEnd(); ++fragment) {
            if (fragment.fragment().charFormat().anchorNames().contains(anchor))
                return true;
        }
    }
    return false;
}

/// The paths of the pages below a folder, but not those of a language in a folder of them all, sorted.
QStringList PagesBelow(const QString& folder)
{
    QStringList pages;
    QDirIterator entry(folder, { "*.html", "*.htm" }, QDir::Files, QDirIterator::Subdirectories);
    while (entry.hasNext()) {
        const QString page = entry.next();
        if (!page.mid(folder.size()).contains(".lproj/"))
            pages.append(page);
    }
    std::sort(pages.begin(), pages.end());
    return pages;
}

}

std::optional<HelpBook> HelpBook::open(const std::string& folder, std::string& problem)
{
    problem.clear();
    HelpBook book;
    book.fFolder = Canonical(QFile::decodeName(folder.c_str()));
    const QByteArray path = QFile::encodeName(book.fFolder);
    const cf::Owned<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()), path.size(), true));
    const cf::Owned<CFBundleRef> bundle(url ? CFBundleCreate(kCFAllocatorDefault, url.get()) : nullptr);
    if (!bundle) {
        problem = folder + ": There is no such help book";
        return std::nullopt;
    }

    const CFTypeRef accessPath
        = CFDictionaryGetValue(CFBundleGetInfoDictionary(bundle.get()), CFSTR("HPDBookAccessPath"));
    if (accessPath == nullptr || CFGetTypeID(accessPath) != CFStringGetTypeID()) {
        problem = folder + ": Not a help book, or damaged: it names no start page";
        return std::nullopt;
    }
    const auto* const relative = static_cast<CFStringRef>(accessPath);
    const cf::Owned<CFURLRef> resources(CFBundleCopyResourcesDirectoryURL(bundle.get()));
    const cf::Owned<CFURLRef> page(CFBundleCopyResourceURL(bundle.get(), relative, nullptr, nullptr));
    const QString startPage = Canonical(PathOf(page.get()));
    book.fResources = Canonical(PathOf(resources.get()));
    book.fStartPage = QUrl::fromLocalFile(startPage);
    if (!book.contains(book.fStartPage)) {
        problem
            = folder + ": The help book is damaged: its start page, " + cf::Utf8(relative) + ", is missing";
        return std::nullopt;
    }
    book.fPages = LanguageFolder(startPage, book.fResources);
    book.fTitle = TitleOf(bundle.get(), book.fFolder);
    return book;
}

QUrl HelpBook::pageWithAnchor(const QString& anchor) const
{
    if (anchor.isEmpty())
        return fStartPage;
    for (const QString& page : PagesBelow(fPages)) {
        QUrl url = QUrl::fromLocalFile(page);
        const QByteArray bytes = read(url).value_or(QByteArray());
        if (!HasAnchor(QStringDecoder::decoderForHtml(bytes)(bytes), anchor))
            continue;
        url.setFragment(anchor, QUrl::DecodedMode);
        return url;
    }
    return fStartPage;
}

bool HelpBook::contains(const QUrl& url) const
{
    const QString path = url.isLocalFile() ? Canonical(url.toLocalFile()) : QString();
    return IsBelow(path, fResources) && QFileInfo(path).isFile();
}

std::optional<QByteArray> HelpBook::read(const QUrl& url) const
{
    QFile file(url.toLocalFile());
    if (!contains(url) || file.size() > kLargestFile || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}
