#pragma once

#include <QtGlobal>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

class QJSEngine;

namespace tools {

// Interrupts the engine when a call outlives its deadline or makes the process grow past its
// memory limit. One thread per script engine, idle between calls: an export runs the script
// for every generated fragment, so starting a thread per call would cost more than the calls.
class script_watchdog
{
   typedef std::chrono::steady_clock clock;

public:
   enum enum_stop { stop_none, stop_time, stop_memory, stop_total_memory };

private:
   // Often enough that a script filling memory as fast as it can overshoots by little.
   static constexpr std::chrono::milliseconds k_poll{10};

   std::mutex m_mutex;
   std::condition_variable m_cond;
   QJSEngine * m_pEngine = nullptr;
   clock::time_point m_deadline;
   qint64 m_iMemoryBase = -1;
   qint64 m_iMemoryLimit = 0;
   // Growth allowed since the engine was made, whatever the calls (0: no check).
   qint64 m_iTotalBase = -1;
   qint64 m_iTotalLimit = 0;
   bool m_bArmed = false;
   enum_stop m_eFired = stop_none;
   bool m_bStop = false;
   std::thread m_thread;

public:
   script_watchdog();
   ~script_watchdog();
   script_watchdog(const script_watchdog &) = delete;
   script_watchdog & operator=(const script_watchdog &) = delete;

   // Resident size of the process in bytes, -1 when unknown (the memory checks are then off).
   static qint64 residentBytes();

   // One call: at most ms, at most memoryMb of growth during the call, and at most
   // totalLimitBytes of growth over totalBase (the size when the engine was made).
   void arm(QJSEngine * pEngine, int ms, int memoryMb, qint64 totalBase = -1, qint64 totalLimitBytes = 0);
   // Once this returns the engine can't be interrupted any more; tells why it was, if it was.
   enum_stop disarm();
   // Stops the clock while a breakpoint holds the call, then grants a full time limit again.
   void suspend();
   void resume(int ms);

private:
   void setDeadline(int ms);
   void fire(enum_stop reason);
   void run();
};

} // namespace tools
