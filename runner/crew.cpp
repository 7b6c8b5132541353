#include "runner/crew.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <exception>
#include <new>
#include <string_view>

#include "runner/failure.h"
#include "runner/output_file.h"

namespace runner {
namespace {

constexpr char kDone = 'd', kFailed = 'f';
// Each report is one packet of a socket that keeps packets whole.
constexpr size_t kLongestPacket = 60'000;

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

}  // namespace

Crew::~Crew() {
  for (const Worker& worker : workers) {
    ::close(worker.socket);  // an idle worker ends by itself
    if (worker.task) ::kill(worker.process, SIGTERM);
  }
  for (const Worker& worker : workers) WaitFor(worker.process);
}

bool Crew::HasRoom() const {
  return workers.size() < limit || std::any_of(workers.begin(), workers.end(),
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

Crew::Worker& Crew::Hire() {
  int sockets[2];
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) != 0)
    throw Failure(std::string("can't make a worker process: ") + std::strerror(errno));
  const pid_t parent = ::getpid();
  const pid_t process = ::fork();
  if (process == 0) {
    ::close(sockets[0]);
    for (const Worker& worker : workers) ::close(worker.socket);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) ::_exit(1);
    Work(sockets[1]);
  }
  ::close(sockets[1]);
  if (process < 0) {
    const int error = errno;
    ::close(sockets[0]);
    throw Failure(std::string("can't make a worker process: ") + std::strerror(error));
  }
  workers.push_back({process, sockets[0], std::nullopt});
  return workers.back();
}

void Crew::Work(int socket) const {
  OutputFile::CleanUpOnSignals();
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  uint64_t number = 0;
  while (::recv(socket, &number, sizeof number, 0) == sizeof number) {
    std::string packet(1, kDone);
    try {
      packet += task(number);
    } catch (const std::bad_alloc&) {
      packet = std::string(1, kFailed) + "there isn't enough memory";
    } catch (const std::exception& failure) {
      packet = kFailed + std::string(failure.what());
    }
    packet.resize(std::min(packet.size(), kLongestPacket));
    if (::send(socket, packet.data(), packet.size(), MSG_NOSIGNAL) < 0) break;
  }
  ::_exit(0);
}

void Crew::Start(size_t taskNumber) {
  const auto idle = std::find_if(workers.begin(), workers.end(),
                                 [](const Worker& worker) { return !worker.task; });
  Worker& worker = idle != workers.end() ? *idle : Hire();
  worker.task = taskNumber;
  const uint64_t number = taskNumber;
  // A worker that is gone is found when its report is waited for.
  static_cast<void>(::send(worker.socket, &number, sizeof number, MSG_NOSIGNAL));
}

std::optional<TaskReport> Crew::Receive(Worker* worker) {
  std::string packet(kLongestPacket, '\0');
  const ssize_t got = ::recv(worker->socket, packet.data(), packet.size(), 0);
  if (got < 0 && errno == EINTR) return std::nullopt;
  TaskReport report;
  report.task = worker->task.value_or(0);
  report.process = worker->process;
  if (got > 0) {
    packet.resize(static_cast<size_t>(got));
    report.outcome = packet[0] == kDone ? TaskReport::Outcome::kDone : TaskReport::Outcome::kFailed;
    report.text = packet.substr(1);
    worker->task.reset();
    return report;
  }
  ::close(worker->socket);
  report.outcome = TaskReport::Outcome::kDied;
  report.text = CauseOf(WaitFor(worker->process));
  worker->socket = -1;
  return report;
}

std::vector<TaskReport> Crew::Wait(const sigset_t& duringWait) {
  std::vector<pollfd> waiting;
  for (const Worker& worker : workers) waiting.push_back({worker.socket, POLLIN, 0});
  std::vector<TaskReport> reports;
  if (::ppoll(waiting.data(), waiting.size(), nullptr, &duringWait) < 0) return reports;
  for (size_t i = 0; i < waiting.size(); ++i) {
    if (waiting[i].revents == 0) continue;
    const bool busy = workers[i].task.has_value();
    std::optional<TaskReport> report = Receive(&workers[i]);
    if (report && busy) reports.push_back(std::move(*report));
  }
  std::erase_if(workers, [](const Worker& worker) { return worker.socket < 0; });
  return reports;
}

}  // namespace runner
