#include "python/module/file_options.h"

#include <algorithm>

#include "python/module/errors.h"
#include "python/module/runtime.h"

namespace pyhost {

namespace py = pybind11;

FileSetup::FileSetup(const std::vector<std::string>& words)
    : options(runner::ParseFileOptions(words)) {
  if (options.layout.empty()) options.layout = kLayout;
  host::Settings unused;
  runner::ChooseFileOptions(
      options, [this](const std::string& message) { warnings.push_back(message); }, &unused,
      &images, &save);
}

const runner::ImageFormat* FileSetup::Format() const {
  return options.format.empty() ? nullptr : runner::FormatCalled(options.format);
}

void Issue(const Warnings& warnings) {
  constexpr int kTwoCallsAbove = 3;
  for (const std::string& warning : warnings)
    if (PyErr_WarnEx(FileWarningClass(), WithNamesOfArguments(warning).c_str(), kTwoCallsAbove) !=
        0)
      throw py::error_already_set();
}

std::string WithNamesOfArguments(std::string message) {
  for (const runner::FileOption& option : runner::FileOptions()) {
    const std::string& written = option.names.back();
    std::string argument = written.substr(2);
    std::replace(argument.begin(), argument.end(), '-', '_');
    for (size_t at = 0; (at = message.find(written, at)) != std::string::npos; ++at) {
      const size_t end = at + written.size();
      // Not in the middle of a word, such as a file's name.
      const bool begins = at == 0 || message[at - 1] == ' ';
      const bool ends =
          end == message.size() || std::string(" :;,.)").find(message[end]) != std::string::npos;
      if (begins && ends) message.replace(at, written.size(), argument);
    }
  }
  return message;
}

}  // namespace pyhost
