#include "runner/noted_signals.h"

#include "runner/output_file.h"

namespace runner {
namespace {

volatile sig_atomic_t notedSignal = 0;
extern "C" void NoteSignal(int signal) { notedSignal = signal; }

}  // namespace

NotedSignals::NotedSignals() {
  notedSignal = 0;
  struct sigaction action {};
  action.sa_handler = NoteSignal;
  sigemptyset(&noted);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (OutputFile::IsIgnored(signal)) continue;
    ::sigaction(signal, &action, nullptr);
    sigaddset(&noted, signal);
  }
  ::sigprocmask(SIG_BLOCK, &noted, &before);
}

NotedSignals::~NotedSignals() {
  // What still waits is noted and does no more.
  ::sigprocmask(SIG_SETMASK, &before, nullptr);
  OutputFile::CleanUpOnSignals();
}

int NotedSignals::Number() const {
  if (notedSignal != 0) return notedSignal;
  sigset_t pending;
  sigemptyset(&pending);
  ::sigpending(&pending);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    if (sigismember(&noted, signal) == 1 && sigismember(&pending, signal) == 1) return signal;
  return 0;
}

}  // namespace runner
