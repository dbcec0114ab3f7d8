#include "SingleViewer.h"

#include <Host/Descriptor.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QLocalSocket>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int kPatience = 3000; // milliseconds
constexpr qint64 kLongestAnchor = 4096;
constexpr char kShown = '\n'; ///< the answer; an anchor ends with it, too

bool IsPrivate(const struct stat& info) { return info.st_uid == geteuid() && (info.st_mode & 077) == 0; }

/// @return the folder, open; none when it cannot be made or others could put their sockets there.
Descriptor OpenPrivateFolder(const QByteArray& path)
{
    mkdir(path.constData(), 0700);
    Descriptor folder(open(path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat info { };
    if (folder && (fstat(folder.get(), &info) != 0 || !IsPrivate(info)))
        folder.close();
    return folder;
}

QByteArray FolderPath()
{
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    struct stat info { };
    if (runtime.startsWith('/') && stat(runtime.constData(), &info) == 0 && IsPrivate(info))
        return runtime + "/HelpViewer";
    return QFile::encodeName(QDir::tempPath()) + "/HelpViewer." + QByteArray::number(geteuid());
}

/// Another display shows windows to somebody else, even if it is the same user.
QByteArray DisplayName()
{
    return QGuiApplication::platformName().toUtf8() + ' ' + qgetenv("DISPLAY") + ' '
        + qgetenv("WAYLAND_DISPLAY");
}

/// @return whether a viewer listens there and has shown the page.
bool Ask(const QString& socket, const QString& anchor)
{
    struct stat info { };
    if (lstat(QFile::encodeName(socket).constData(), &info) != 0 || info.st_uid != geteuid())
        return false;
    QLocalSocket peer;
    peer.connectToServer(socket);
    if (!peer.waitForConnected(kPatience))
        return false;
    peer.write(anchor.toUtf8().replace(kShown, ' ') + kShown);
    return peer.waitForReadyRead(kPatience) && peer.read(1) == QByteArray(1, kShown);
}

}

SingleViewer::SingleViewer(const QString& book, std::function<void(const QString&)> show)
    : fShow(std::move(show))
{
    const QByteArray folder = FolderPath();
    if (!OpenPrivateFolder(folder))
        return;
    const QByteArray identity = book.toUtf8() + '\0' + DisplayName();
    const QByteArray name = QCryptographicHash::hash(identity, QCryptographicHash::Sha256).toHex().left(16);
    fSocket = QFile::decodeName(folder + '/' + name);
    fServer.setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(&fServer, &QLocalServer::newConnection, &fServer, [this] {
        while (QLocalSocket* const peer = fServer.nextPendingConnection()) {
            QObject::connect(peer, &QLocalSocket::readyRead, peer, [this, peer] { answer(peer); });
            QObject::connect(peer, &QLocalSocket::disconnected, peer, &QObject::deleteLater);
            answer(peer);
        }
    });
}

bool SingleViewer::handOver(const QString& anchor)
{
    if (fSocket.isEmpty())
        return false;
    // Held until this viewer listens or is not needed, so that of two that start at once the second meets the
    // first.
    const Descriptor folder = OpenPrivateFolder(FolderPath());
    if (!folder || flock(folder.get(), LOCK_EX) != 0)
        return false;
    if (Ask(fSocket, anchor))
        return true;
    QLocalServer::removeServer(fSocket); // left over by a viewer that was killed
    if (!fServer.listen(fSocket))
        qWarning("HelpViewer: %s: %s", qUtf8Printable(fSocket), qUtf8Printable(fServer.errorString()));
    return false;
}

void SingleViewer::answer(QLocalSocket* peer)
{
    if (!peer->canReadLine()) {
        if (peer->bytesAvailable() > kLongestAnchor)
            peer->abort();
        return;
    }
    fShow(QString::fromUtf8(peer->readLine().chopped(1)));
    peer->write(&kShown, 1);
    peer->disconnectFromServer();
}
