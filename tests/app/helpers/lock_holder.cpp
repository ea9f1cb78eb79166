// Takes the export lock of the directory given as argument, says "locked" and waits to be
// killed: the lock test needs a live process holding it, and then a dead one.
#include <QCoreApplication>
#include <QLockFile>
#include <QThread>

#include <cstdio>

int main(int argc, char ** argv)
{
   QCoreApplication app(argc, argv);
   if (argc != 2) { std::fputs("usage: lock_holder DIR\n", stderr); return 2; }
   QLockFile lock(QString::fromLocal8Bit(argv[1]) + "/.tavrel_export.lock");
   if (! lock.tryLock(0)) { std::fputs("cannot lock\n", stderr); return 1; }
   std::fputs("locked\n", stdout);
   std::fflush(stdout);
   QThread::sleep(600);
   return 0;
}
