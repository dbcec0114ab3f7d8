#pragma once

#include "HelpViewer/HelpBook.h"

#include <QTemporaryDir>
#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <string>

/// How failed expectations show texts.
inline void PrintTo(const QString& text, std::ostream* stream) { *stream << text.toStdString(); }
inline void PrintTo(const QUrl& url, std::ostream* stream) { *stream << url.toString().toStdString(); }

/// A help book in a temporary folder of its own, which is also the home and runtime folder of this process
/// while the object lives. English, with the start page index.html.
class TestBook {
public:
    TestBook();
    ~TestBook();
    TestBook(const TestBook&) = delete;
    TestBook& operator=(const TestBook&) = delete;

    /// A path in the temporary folder, beside the book.
    QString outside(const QString& name) const { return fFolder.filePath(name); }
    std::string folder() const { return outside("Test.help").toStdString(); }
    /// A path below the book's resources.
    QString resource(const QString& name) const;

    /// Writes a page of the book. @param name path below the resources.
    void addPage(const QString& name, const QString& body, const QString& head = {}) const;
    void writeInfo(const QString& entries) const;
    static void write(const QString& path, const QByteArray& bytes);

    /// The book, which has to be one.
    HelpBook open() const;
    /// What is wrong with the book; "" when it opens.
    std::string problem() const;

private:
    QTemporaryDir fFolder;
    const QByteArray fRuntimeFolder; ///< what it was before
};

/// Makes this the user's language, as in "de_DE.UTF-8".
void SetLanguage(const char* locale);

/// Runs the event loop, at most ten seconds, until the condition holds. @return whether it does.
bool Eventually(const std::function<bool()>& condition);
