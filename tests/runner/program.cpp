#include "tests/runner/program.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <stdexcept>

#include "places.h"

namespace runner {
namespace {

void ReadAll(int* one, std::string* first, int* two, std::string* second) {
  while (*one >= 0 || *two >= 0) {
    pollfd waiting[2] = {{*one, POLLIN, 0}, {*two, POLLIN, 0}};
    if (::poll(waiting, 2, -1) < 0) continue;
    int* files[2] = {one, two};
    std::string* texts[2] = {first, second};
    for (int i = 0; i < 2; ++i) {
      if (*files[i] < 0 || waiting[i].revents == 0) continue;
      char chunk[4096];
      const ssize_t got = ::read(*files[i], chunk, sizeof chunk);
      if (got > 0) {
        texts[i]->append(chunk, size_t(got));
      } else {
        ::close(*files[i]);
        *files[i] = -1;
      }
    }
  }
}

}  // namespace

Program::Program(const std::vector<std::string>& arguments, const Surroundings& around) {
  std::vector<std::string> words = {PICTURE_HOST_PROGRAM};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);

  int out[2], err[2];
  if (::pipe2(out, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  if (around.terminal) {
    winsize size{24, 60, 0, 0};
    if (::openpty(&err[0], &err[1], nullptr, nullptr, &size) != 0)
      throw std::runtime_error("no terminal");
  } else if (::pipe2(err, O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  process = ::fork();
  if (process == 0) {
    ::dup2(::open(around.input.empty() ? "/dev/null" : around.input.c_str(), O_RDONLY), 0);
    ::dup2(around.output.empty() ? out[1] : ::open(around.output.c_str(), O_WRONLY), 1);
    ::dup2(err[1], 2);
    if (!around.folder.empty() && ::chdir(around.folder.c_str()) != 0) ::_exit(126);
    if (around.largestFile > 0) {
      const rlimit limit{around.largestFile, around.largestFile};
      ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    // Whatever these tests are started by.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
      ::signal(signal, signal == around.ignored ? SIG_IGN : SIG_DFL);
    ::execv(pointers[0], pointers.data());
    ::_exit(127);
  }
  ::close(out[1]);
  ::close(err[1]);
  outPipe = out[0];
  errPipe = err[0];
}

Program::~Program() {
  if (process > 0) Wait();
}

std::vector<pid_t> Program::Children() const {
  const std::string number = std::to_string(process);
  std::ifstream list("/proc/" + number + "/task/" + number + "/children");
  std::vector<pid_t> children;
  for (pid_t child = 0; list >> child;) children.push_back(child);
  return children;
}

Finished Program::Wait() {
  Finished finished;
  ReadAll(&outPipe, &finished.out, &errPipe, &finished.err);
  int status = 0;
  ::waitpid(process, &status, 0);
  process = -1;
  finished.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  return finished;
}

std::string ValueOf(const std::string& out, const std::string& name) {
  const std::string start = name + " = ";
  size_t at = out.starts_with(start) ? 0 : out.find("\n" + start);
  if (at == std::string::npos) return "(none)";
  at = out.find(start, at) + start.size();
  return out.substr(at, out.find('\n', at) - at);
}

}  // namespace runner
