// To be preloaded into a Qt program: ends it as soon as the window whose object name the environment variable
// EXIT_AT_FIRST_PAINT_OF gives has been painted, so that bench/run can time from outside how long it took to start. A
// program in which that does not happen within half a minute is killed.

#include <QCoreApplication>
#include <QEvent>
#include <cstdlib>
#include <unistd.h>

namespace {

class ExitAtFirstPaint : public QObject {
public:
    explicit ExitAtFirstPaint(QObject* parent)
        : QObject(parent)
    {
        setObjectName(qEnvironmentVariable("EXIT_AT_FIRST_PAINT_OF"));
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        // The event reaches the window only after this, and then the picture has to go to the display; back in the
        // main loop both are done.
        if (event->type() == QEvent::Paint && watched->objectName() == objectName())
            startTimer(0);
        return false;
    }
    void timerEvent(QTimerEvent*) override { std::_Exit(EXIT_SUCCESS); }
};

void WatchForFirstPaint()
{
    alarm(30);
    qApp->installEventFilter(new ExitAtFirstPaint(qApp));
}

}

Q_COREAPP_STARTUP_FUNCTION(WatchForFirstPaint)
