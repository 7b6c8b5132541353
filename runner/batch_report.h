// What a batch tells: values in the order of the inputs, and what failed.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "runner/progress.h"
#include "runner/values.h"

namespace runner {

// Values go to standard output, all else to standard error.
class BatchReport {
 public:
  struct Style {
    ValueFormat format = ValueFormat::kText;
    bool quiet = false;      // no bar and no summary
    bool keepGoing = false;  // however the first files fail
  };
  BatchReport(uint64_t total, const Style& style);
  BatchReport(const BatchReport&) = delete;
  BatchReport& operator=(const BatchReport&) = delete;

  // Each file is told of once, by its number, in any order. Done: with what it printed. Skipped: an
  // earlier run did it.
  void Done(uint64_t number, std::string printed);
  void Skipped(uint64_t number);
  void Failed(uint64_t number, const std::string& file, const std::string& why);
  // One line about something else.
  void Warn(const std::string& message);

  // The first files failed, all for one reason that isn't a file's own: the others would, too.
  bool IsHopeless() const { return !decided && held.size() >= kAlike; }
  // False: so many values wait for a file before them that no more should be begun.
  bool HasRoom() const { return waiting.size() < kMostWaiting; }
  // What is still held back is told. Nothing more is reported.
  void Finish();

  uint64_t DoneCount() const { return done; }
  uint64_t SkippedCount() const { return skipped; }
  uint64_t FailedCount() const { return failed; }

 private:
  // So many files decide whether all would fail.
  static constexpr size_t kAlike = 3;
  static constexpr size_t kMostWaiting = 4096;
  struct Held {
    std::string file, why, reason;  // the reason without the file's name
  };
  void Take(uint64_t number, std::string text);
  void FindColumns();
  void PrintWaiting();
  void Decide();
  void Complain(const Held& failure);

  Style style;
  Progress progress;
  uint64_t done = 0, skipped = 0, failed = 0;
  bool decided = false, isFinished = false;
  std::vector<Held> held;
  uint64_t next = 0;  // whose text is printed next
  std::map<uint64_t, std::string> waiting;
  std::map<uint64_t, Held> failures;  // of those, whose line depends on the columns
  std::string columns;                // of the table; empty: not yet known
};

}  // namespace runner
