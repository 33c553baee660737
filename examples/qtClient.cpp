// Polls a server from an event loop of Qt without blocking it: a worker in a QThread makes the requests.
//   qtClient HOST PORT COUNT     against: gqtool station; ends after COUNT results

#include <gqLib/returningClient.h>

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <string>

//! [worker]
// Asks a server for its state ten times a second, in the thread to which it is moved.
class Poller : public QObject {
    Q_OBJECT

public:
    Poller(const std::string& host, int port) : client(host, port, 3000), timer(this) // a child moves with its parent
    {
        connect(&timer, &QTimer::timeout, this, &Poller::poll);
    }

    void start() { timer.start(100); }

signals:
    void polled(int result, bool replied);

private:
    void poll()
    {
        int result = client.ready(); // connects if necessary
        if (result == 1)
            result = client.systemState();
        emit polled(result, client.isConnected());
    }

    gqdb::CReturningTcpClient client;
    QTimer timer;
};
//! [worker]

// What a window would be: shows results and a clock in the thread of the event loop.
class Display : public QObject {
public:
    explicit Display(int results) : timer(this), left(results)
    {
        connect(&timer, &QTimer::timeout, this, [] { show("clock"); });
        timer.start(50);
    }

    void showState(int result, bool replied)
    {
        if (left == 0)
            return; // signalled before the worker ended
        show(qPrintable(QString(replied ? "state %1" : "no answer, %1").arg(result)));
        if (--left > 0)
            return;
        timer.stop();
        QCoreApplication::quit();
    }

private:
    static void show(const char* line)
    {
        std::puts(line);
        std::fflush(stdout);
    }

    QTimer timer;
    int left;
};

int main(int argc, char* argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: qtClient HOST PORT COUNT\n");
        return 2;
    }
    //! [main]
    QCoreApplication application(argc, argv); // QApplication in a program with windows
    Display display(std::atoi(argv[3]));
    auto* poller = new Poller(argv[1], std::atoi(argv[2]));
    QThread thread;
    poller->moveToThread(&thread);
    QObject::connect(&thread, &QThread::started, poller, &Poller::start);
    QObject::connect(&thread, &QThread::finished, poller, &QObject::deleteLater);
    QObject::connect(poller, &Poller::polled, &display, &Display::showState); // called in the display's thread
    thread.start();
    const int exitCode = QCoreApplication::exec();
    thread.quit();
    thread.wait(); // until a request that is under way has ended
    return exitCode;
    //! [main]
}

#include "qtClient.moc"
