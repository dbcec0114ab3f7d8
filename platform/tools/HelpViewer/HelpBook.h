#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <optional>
#include <string>

/// A help book: a bundle whose information file has the keys HPDBookAccessPath, the start page's path below
/// the resources or the language's folder, and HPDBookTitle. Its pages are HTML in Contents/Resources or, for
/// each language, in Contents/Resources/<language>.lproj, of which CFBundle chooses the user's.
/// Every file handed out lies in the resources folder, wherever links lead. Pages are looked for on the disk
/// in each call.
class HelpBook {
public:
    /// Needs no QApplication.
    /// @param folder host path of the bundle.
    /// @param problem set to one line for the user when there is no book to be shown.
    static std::optional<HelpBook> open(const std::string& folder, std::string& problem);

    /// The bundle's folder: absolute, the same whichever way leads to it.
    const QString& folder() const { return fFolder; }
    /// In the language of the pages: HPDBookTitle, else CFBundleName, else the folder's name.
    const QString& title() const { return fTitle; }
    const QUrl& startPage() const { return fStartPage; }

    /// The place, with the anchor as its fragment, in the first page in the order of their paths that has an
    /// element of this name or id; the start page, without a fragment, when none has or `anchor` is empty.
    /// Needs a QGuiApplication.
    QUrl pageWithAnchor(const QString& anchor) const;

    /// Whether the URL is that of a file of the book that is there.
    bool contains(const QUrl& url) const;

    /// @return the bytes of a file of the book; nothing when it is none, unreadable or larger than 16 MB.
    std::optional<QByteArray> read(const QUrl& url) const;

private:
    HelpBook() = default;

    QString fFolder;
    QString fResources; ///< the folder that no file handed out lies outside of
    QString fPages; ///< the folder of the user's language, or fResources
    QString fTitle;
    QUrl fStartPage;
};
