#include "runner/files/vips_library.h"

#include <unistd.h>
#include <vips/vips.h>

#include <algorithm>
#include <atomic>
#include <mutex>

#include "runner/failure.h"
#include "runner/files/image_format.h"
#include "runner/files/vips_modules.h"

namespace runner {
namespace {

// What the library would print. It repeats in many lines what its calls report, or tells of tags
// that it doesn't know; what matters is looked for where it happens.
void Ignore(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

void AllowLoader(std::string_view loader) {
  vips_operation_block_set(std::string(loader).c_str(), FALSE);
}

void Start() {
  for (const char* domain : {"VIPS", "GLib-GObject"})
    g_log_set_handler(domain, static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK | G_LOG_FLAG_FATAL),
                      Ignore, nullptr);
  const WithoutVipsModules quickly;
  if (vips_init("picturehost") != 0)
    throw Failure("the library for picture files can't be started: " +
                  VipsProblem(vips_error_buffer()));
  // Drawings, documents and the like fetch other files or run programs; raw formats lie easily.
  vips_operation_block_set("VipsForeignLoad", TRUE);
  for (const ImageFormat& format : ImageFormats()) AllowLoader(format.loader);
  // Each picture is looked at once. Encoders take no more than one thread to be fed.
  vips_cache_set_max(0);
  vips_concurrency_set(1);
}

}  // namespace

void StartVips() {
  static std::once_flag once;
  std::call_once(once, Start);
}

void RequireThreads() {
  static std::atomic<pid_t> threadsOf{0};
  pid_t process = 0;
  if (!threadsOf.compare_exchange_strong(process, ::getpid()) && process != ::getpid())
    throw Failure(
        "a process that was forked from one that has saved pictures or opened WebP files can do "
        "neither; start it anew (in Python: multiprocessing's \"spawn\")");
}

std::string VipsProblem(std::string_view problem) {
  std::vector<std::string_view> lines;
  while (!problem.empty()) {
    const size_t end = std::min(problem.find('\n'), problem.size());
    std::string_view line = problem.substr(0, end);
    problem.remove_prefix(std::min(end + 1, problem.size()));
    // "VipsJpeg: premature end of file": the first word is the library's own.
    const size_t colon = line.find(": ");
    if (colon != std::string_view::npos &&
        line.substr(0, colon).find(' ') == std::string_view::npos)
      line.remove_prefix(colon + 2);
    if (!line.empty() && std::find(lines.begin(), lines.end(), line) == lines.end())
      lines.push_back(line);
  }
  std::string sentence;
  for (const std::string_view line : lines) {
    if (!sentence.empty()) sentence += "; ";
    sentence += line;
  }
  return sentence.empty() ? "unknown error" : sentence;
}

}  // namespace runner
