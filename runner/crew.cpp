#include "runner/crew.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <exception>
#include <fstream>
#include <new>
#include <string_view>
#include <utility>

#include "runner/failure.h"
#include "runner/output_file.h"

namespace runner {
namespace {

// A report is packets of a socket that keeps packets whole; the first byte says what they are.
constexpr char kDone = 'd', kFailed = 'f', kMoreFollows = 'm';
constexpr size_t kLongestPacket = 60'000;
// A worker that is told to end removes what it has begun.
constexpr auto kPatience = std::chrono::seconds(5);

std::string CauseOf(int status) {
  if (WIFSIGNALED(status)) return ::strsignal(WTERMSIG(status));
  return "exit status " + std::to_string(WEXITSTATUS(status));
}

int WaitFor(pid_t process) {
  int status = 0;
  while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

bool SendAll(int socket, char kind, std::string_view text) {
  std::string packet;
  do {
    const std::string_view part = text.substr(0, kLongestPacket - 1);
    text.remove_prefix(part.size());
    packet.assign(1, text.empty() ? kind : kMoreFollows).append(part);
    if (::send(socket, packet.data(), packet.size(), MSG_NOSIGNAL) < 0) return false;
  } while (!text.empty());
  return true;
}

// What the process has in private memory now, and so many bytes more.
void LimitMemory(uint64_t more) {
  std::ifstream file("/proc/self/statm");
  uint64_t total = 0, resident = 0, shared = 0, text = 0, library = 0, data = 0;
  file >> total >> resident >> shared >> text >> library >> data;
  const rlim_t bytes = data * static_cast<uint64_t>(::sysconf(_SC_PAGESIZE)) + more;
  const rlimit limit{bytes, bytes};
  ::setrlimit(RLIMIT_DATA, &limit);
}

}  // namespace

Crew::~Crew() {
  for (const Worker& worker : workers) {
    ::close(worker.socket);  // an idle worker ends by itself
    if (worker.task) ::kill(worker.process, SIGTERM);
  }
  for (const Worker& worker : workers) WaitFor(worker.process);
}

bool Crew::HasRoom() const {
  return workers.size() < most || std::any_of(workers.begin(), workers.end(),
                                              [](const Worker& worker) { return !worker.task; });
}

bool Crew::IsBusy() const {
  return std::any_of(workers.begin(), workers.end(),
                     [](const Worker& worker) { return worker.task.has_value(); });
}

std::vector<pid_t> Crew::Processes() const {
  std::vector<pid_t> processes;
  for (const Worker& worker : workers) processes.push_back(worker.process);
  return processes;
}

Crew::Worker* Crew::Hire() {
  const auto fail = [&](int error) -> Worker* {
    shortage = std::string("can't make a worker process: ") + std::strerror(error);
    if (workers.empty()) throw Failure(shortage);
    most = workers.size();
    return nullptr;
  };
  int sockets[2];
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) != 0) return fail(errno);
  const pid_t parent = ::getpid();
  const pid_t process = ::fork();
  if (process == 0) {
    ::close(sockets[0]);
    for (const Worker& worker : workers) ::close(worker.socket);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) ::_exit(1);
    Work(sockets[1]);
  }
  const int error = errno;
  ::close(sockets[1]);
  if (process < 0) {
    ::close(sockets[0]);
    return fail(error);
  }
  Worker worker;
  worker.process = process;
  worker.socket = sockets[0];
  workers.push_back(std::move(worker));
  return &workers.back();
}

void Crew::Work(int socket) const {
  OutputFile::CleanUpOnSignals();
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  if (limits.memory > 0) LimitMemory(limits.memory);
  std::string order(kLongestPacket, '\0');
  for (ssize_t got = 0; (got = ::recv(socket, order.data(), order.size(), 0)) > 0;) {
    char kind = kFailed;
    std::string text;
    try {
      text = task(order.substr(1, static_cast<size_t>(got) - 1));
      kind = kDone;
    } catch (const std::bad_alloc&) {
      text = "there isn't enough memory";
    } catch (const std::exception& failure) {
      text = failure.what();
    }
    if (!SendAll(socket, kind, text)) break;
  }
  ::_exit(0);
}

bool Crew::Start(uint64_t taskNumber, const std::string& order) {
  const auto idle = std::find_if(workers.begin(), workers.end(),
                                 [](const Worker& worker) { return !worker.task; });
  Worker* worker = idle != workers.end() ? &*idle : Hire();
  if (worker == nullptr) return false;
  worker->task = taskNumber;
  worker->started = Clock::now();
  worker->end = worker->started + limits.time;
  // A worker that is gone is found when its report is waited for.
  SendAll(worker->socket, kDone, order);
  return true;
}

std::optional<TaskReport> Crew::Receive(Worker* worker) {
  std::string packet(kLongestPacket, '\0');
  const ssize_t got = ::recv(worker->socket, packet.data(), packet.size(), 0);
  if (got < 0 && errno == EINTR) return std::nullopt;
  if (got > 0) {
    worker->report.append(packet, 1, static_cast<size_t>(got) - 1);
    if (packet[0] == kMoreFollows) return std::nullopt;
  }
  TaskReport report;
  report.task = worker->task.value_or(0);
  report.process = worker->process;
  report.seconds = std::chrono::duration<double>(Clock::now() - worker->started).count();
  if (got > 0) {
    report.outcome = packet[0] == kDone ? TaskReport::Outcome::kDone : TaskReport::Outcome::kFailed;
    report.text = std::exchange(worker->report, {});
    worker->task.reset();
    // It has been told to end, and may still do so.
    if (worker->isLate) Dismiss(worker);
    return report;
  }
  report.outcome = worker->isLate ? TaskReport::Outcome::kLate : TaskReport::Outcome::kDied;
  report.text = CauseOf(Dismiss(worker));
  return report;
}

int Crew::Dismiss(Worker* worker) {
  ::close(std::exchange(worker->socket, -1));
  return WaitFor(worker->process);
}

std::optional<timespec> Crew::TimeLeft() const {
  std::optional<Clock::time_point> first;
  for (const Worker& worker : workers)
    if (worker.task && limits.time.count() > 0 && (!first || worker.end < *first))
      first = worker.end;
  if (!first) return {};
  const auto left = std::max(Clock::duration::zero(), *first - Clock::now());
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  return timespec{seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
}

// At first they are told to end, then they are ended.
void Crew::EndLateWorkers() {
  if (limits.time.count() == 0) return;
  for (Worker& worker : workers) {
    if (!worker.task || Clock::now() < worker.end) continue;
    ::kill(worker.process, worker.isLate ? SIGKILL : SIGTERM);
    worker.isLate = true;
    worker.end = Clock::now() + kPatience;
  }
}

std::vector<TaskReport> Crew::Wait(const sigset_t& duringWait) {
  std::vector<pollfd> waiting;
  for (const Worker& worker : workers) waiting.push_back({worker.socket, POLLIN, 0});
  std::vector<TaskReport> reports;
  const std::optional<timespec> left = TimeLeft();
  const int ready = ::ppoll(waiting.data(), waiting.size(), left ? &*left : nullptr, &duringWait);
  if (ready < 0) return reports;
  for (size_t i = 0; i < waiting.size(); ++i) {
    if (waiting[i].revents == 0) continue;
    const bool busy = workers[i].task.has_value();
    std::optional<TaskReport> report = Receive(&workers[i]);
    if (report && busy) reports.push_back(std::move(*report));
  }
  std::erase_if(workers, [](const Worker& worker) { return worker.socket < 0; });
  EndLateWorkers();
  return reports;
}

}  // namespace runner
