// Runs the built program as a person would.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace runner {

struct Finished {
  int status = -1;  // exit status; 128 and the signal's number where one ended it
  std::string out, err;
};

struct Surroundings {
  std::string folder;       // to run in; empty: this one
  bool terminal = false;    // standard error is one, 60 columns wide
  size_t largestFile = 0;   // bytes, as a disk that fills up; 0: no limit
  std::string output = {};  // what standard output is; empty: it is read
  int ignored = 0;          // a signal that is ignored, as nohup does; 0: none
  std::string input = {};   // what standard input is; empty: nothing
};

// A program that runs; it is waited for at the end at the latest.
class Program {
 public:
  explicit Program(const std::vector<std::string>& arguments, const Surroundings& around = {});
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  pid_t Process() const { return process; }
  // Processes that it started and that live.
  std::vector<pid_t> Children() const;
  // Its end, and all that it wrote.
  Finished Wait();

 private:
  pid_t process = -1;
  int outPipe = -1, errPipe = -1;
};

inline Finished RunProgram(const std::vector<std::string>& arguments,
                           const Surroundings& around = {}) {
  return Program(arguments, around).Wait();
}

// Text as "name = value" lines; the value of one, or "(none)".
std::string ValueOf(const std::string& out, const std::string& name);

}  // namespace runner
