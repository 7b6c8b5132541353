#include "runner/work/manifest.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>

#include "runner/disk.h"
#include "runner/failure.h"
#include "runner/names.h"
#include "runner/work/json_text.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

constexpr std::array<const char*, 3> kResults = {"written", "intended", "failed"};

// Behind the last line end.
off_t EndOfLines(int file, off_t size) {
  std::array<char, 4096> block{};
  while (size > 0) {
    const off_t start = std::max<off_t>(0, size - static_cast<off_t>(block.size()));
    const ssize_t got = ::pread(file, block.data(), static_cast<size_t>(size - start), start);
    if (got <= 0) break;
    for (ssize_t i = got; i > 0; --i)
      if (block[static_cast<size_t>(i - 1)] == '\n') return start + i;
    size = start;
  }
  return 0;
}

void AddState(Json* json, const FileState& state) {
  (*json)["size"] = state.size;
  (*json)["time"] = state.time;
}

FileState StateIn(const Json& json) {
  return {json.at("size").get<uint64_t>(), json.at("time").get<int64_t>()};
}

}  // namespace

Manifest::Manifest(const fs::path& manifest) : name(manifest) {
  RealFolders folders;
  folder = folders.Of(name.parent_path()).FullPath();
}

Manifest::~Manifest() {
  if (file >= 0) ::close(file);
}

void Manifest::Fail(const char* what, int error) const {
  throw Failure(std::string("can't ") + what + " the manifest " + Quoted(name.native()) + ": " +
                std::strerror(error));
}

std::string Manifest::Seen(const std::string& path) const {
  const std::string start = folder == "/" ? "/" : folder.native() + "/";
  return path.starts_with(start) ? path.substr(start.size()) : path;
}

std::string Manifest::LineOf(const ManifestEntry& entry) const {
  Json json = {{"input", TextAsJson(entry.input)}};
  AddState(&json, entry.inputState);
  json["settings"] = entry.settings;
  Json outputs = Json::array();
  for (const ManifestOutput& output : entry.outputs) {
    Json each = {{"file", TextAsJson(Seen(output.file))}};
    AddState(&each, output.state);
    if (output.inode != 0) each["inode"] = output.inode;
    outputs.push_back(std::move(each));
  }
  json["outputs"] = std::move(outputs);
  json["seconds"] = std::round(entry.seconds * 1e6) / 1e6;
  json["result"] = kResults[static_cast<size_t>(entry.result)];
  if (!entry.error.empty()) json["error"] = TextAsJson(entry.error);
  return Compact(json) + "\n";
}

std::optional<ManifestEntry> Manifest::Parse(const std::string& line) const {
  const Json json = Json::parse(line, nullptr, false);
  if (!json.is_object()) return {};
  try {
    ManifestEntry entry;
    const std::string result = json.at("result").get<std::string>();
    const auto* const known = std::find(kResults.begin(), kResults.end(), result);
    if (known == kResults.end()) return {};
    entry.result = static_cast<ManifestEntry::Result>(known - kResults.begin());
    entry.input = BytesIn(json.at("input")).value_or("");
    entry.inputState = StateIn(json);
    entry.settings = json.at("settings").get<std::string>();
    for (const Json& each : json.at("outputs")) {
      ManifestOutput output;
      output.file = (folder / BytesIn(each.at("file")).value_or("")).native();
      output.state = StateIn(each);
      output.inode = each.value("inode", uint64_t{0});
      entry.outputs.push_back(std::move(output));
    }
    entry.seconds = json.value("seconds", 0.0);
    return entry;
  } catch (const Json::exception&) {
    return {};
  }
}

uint64_t Manifest::Read(uint64_t start,
                        const std::function<void(const ManifestEntry&)>& take) const {
  const std::unique_ptr<std::FILE, void (*)(std::FILE*)> opened(std::fopen(name.c_str(), "re"),
                                                                [](std::FILE* each) {
                                                                  if (each != nullptr)
                                                                    std::fclose(each);
                                                                });
  if (opened == nullptr) {
    if (errno == ENOENT || errno == ENOTDIR) return 0;
    Fail("open", errno);
  }
  if (::fseeko(opened.get(), static_cast<off_t>(start), SEEK_SET) != 0) Fail("read", errno);
  struct Line {
    char* text = nullptr;
    size_t room = 0;
    ~Line() { std::free(text); }
  } line;
  ssize_t length = 0;
  while ((length = ::getline(&line.text, &line.room, opened.get())) > 0) {
    if (line.text[length - 1] != '\n') break;
    start += static_cast<uint64_t>(length);
    const auto entry = Parse(std::string(line.text, static_cast<size_t>(length - 1)));
    if (entry) take(*entry);
  }
  if (std::ferror(opened.get()) != 0) Fail("read", errno);
  return start;
}

void Manifest::Open() {
  if (file >= 0) return;
  file = ::open(name.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (file < 0) Fail("open", errno);
  struct stat status {};
  if (::fstat(file, &status) == 0 && !S_ISREG(status.st_mode)) {
    ::close(std::exchange(file, -1));
    throw Failure("the manifest " + Quoted(name.native()) + " isn't a regular file");
  }
}

Manifest::Lock::Lock(const Manifest& manifest) : file(manifest.file) {
  while (::flock(file, LOCK_EX) != 0)
    if (errno != EINTR) manifest.Fail("lock", errno);
}

Manifest::Lock::~Lock() { ::flock(file, LOCK_UN); }

void Manifest::Append(std::string_view lines) {
  const Lock lock(*this);
  struct stat status {};
  if (::fstat(file, &status) != 0) Fail("write", errno);
  const off_t end = EndOfLines(file, status.st_size);
  if (end < status.st_size && ::ftruncate(file, end) != 0) Fail("write", errno);
  const ssize_t written = ::write(file, lines.data(), lines.size());
  if (written == static_cast<ssize_t>(lines.size())) return;
  const int error = written < 0 ? errno : ENOSPC;
  if (::ftruncate(file, end) != 0) Fail("repair", errno);
  Fail("write", error);
}

void Manifest::Flush() {
  while (::fdatasync(file) != 0) {
    if (errno == EINTR) continue;
    if (errno == EINVAL || errno == ENOTSUP || errno == EROFS) return;
    Fail("flush", errno);
  }
}

}  // namespace runner
