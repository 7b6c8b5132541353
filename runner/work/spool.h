// Texts that are read twice and held nowhere but in a temporary file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace runner {

// The file has no name, lies where TMPDIR says or in /tmp, and is gone with this. One thread.
class Spool {
 public:
  // Throws Failure where no temporary file can be made.
  Spool();

  // Throws Failure, for a full disk and the like.
  void Add(std::string_view record);
  // From now on Next gives the records from the first on, and nothing can be added.
  void Rewind();
  // Whether there was one more. Throws Failure.
  bool Next(std::string* record);

  uint64_t Count() const { return count; }

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Close> file;
  uint64_t count = 0;
};

}  // namespace runner
