#include "script/script_watchdog.h"

#include <QJSEngine>

#include <algorithm>
#include <cstdio>

#ifdef Q_OS_LINUX
#include <unistd.h>
#endif

namespace tools {

qint64 script_watchdog::residentBytes()
{
#ifdef Q_OS_LINUX
   std::FILE * f = std::fopen("/proc/self/statm", "r");
   if (! f) { return -1; }
   long long total = 0, resident = 0;
   const int n = std::fscanf(f, "%lld %lld", & total, & resident);
   std::fclose(f);
   if (n != 2) { return -1; }
   return static_cast<qint64>(resident) * static_cast<qint64>(sysconf(_SC_PAGESIZE));
#else
   return -1;
#endif
}

script_watchdog::script_watchdog() : m_thread([this]() { run(); }) { ; }

script_watchdog::~script_watchdog()
{
   { std::lock_guard<std::mutex> lock(m_mutex); m_bStop = true; }
   m_cond.notify_all();
   m_thread.join();
}

void script_watchdog::arm(QJSEngine * pEngine, int ms, int memoryMb, qint64 totalBase, qint64 totalLimitBytes)
{
   const qint64 base = ((memoryMb > 0) ? residentBytes() : -1);
   {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_pEngine = pEngine;
      m_eFired = stop_none;
      m_iMemoryBase = base;
      m_iMemoryLimit = ((base >= 0) ? (static_cast<qint64>(memoryMb) * 1024 * 1024) : 0);
      m_iTotalBase = totalBase;
      m_iTotalLimit = (((totalBase >= 0) && (totalLimitBytes > 0)) ? totalLimitBytes : 0);
      setDeadline(ms);
   }
   m_cond.notify_all();
}

script_watchdog::enum_stop script_watchdog::disarm()
{
   std::lock_guard<std::mutex> lock(m_mutex);
   m_bArmed = false;
   m_iMemoryLimit = 0;
   m_iTotalLimit = 0;
   return m_eFired;
}

void script_watchdog::suspend() { std::lock_guard<std::mutex> lock(m_mutex); m_bArmed = false; }

void script_watchdog::resume(int ms)
{
   { std::lock_guard<std::mutex> lock(m_mutex); if ((m_eFired == stop_none) && m_pEngine) { setDeadline(ms); } }
   m_cond.notify_all();
}

void script_watchdog::setDeadline(int ms)
{
   m_bArmed = ((ms > 0) || (m_iMemoryLimit > 0) || (m_iTotalLimit > 0));
   m_deadline = ((ms > 0) ? (clock::now() + std::chrono::milliseconds(ms)) : clock::time_point::max());
}

void script_watchdog::fire(enum_stop reason)
{
   // Thread-safe by QJSEngine's contract; the engine stops at its next check.
   m_pEngine->setInterrupted(true);
   m_eFired = reason;
   m_bArmed = false;
}

void script_watchdog::run()
{
   std::unique_lock<std::mutex> lock(m_mutex);
   while (! m_bStop)
   {
      if (! m_bArmed) { m_cond.wait(lock); continue; }
      const clock::time_point now = clock::now();
      const bool bMemory = ((m_iMemoryLimit > 0) || (m_iTotalLimit > 0));
      const clock::time_point wake = (bMemory ? std::min(m_deadline, now + k_poll) : m_deadline);
      m_cond.wait_until(lock, wake);
      if (! m_bArmed || m_bStop) { continue; }
      if (clock::now() >= m_deadline) { fire(stop_time); continue; }
      if (bMemory)
      {
         const qint64 resident = residentBytes();
         if (resident < 0) { continue; }
         if ((m_iMemoryLimit > 0) && ((resident - m_iMemoryBase) > m_iMemoryLimit)) { fire(stop_memory); }
         else if ((m_iTotalLimit > 0) && ((resident - m_iTotalBase) > m_iTotalLimit)) { fire(stop_total_memory); }
      }
   }
}

} // namespace tools
