#include "runner/work/manifest.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>
#include <thread>

#include "runner/failure.h"
#include "runner/work/manifest_index.h"
#include "tests/runner/images.h"
#include "tests/runner/scratch.h"

namespace runner {
namespace {

class Manifests : public ::testing::Test {
 protected:
  ManifestEntry Entry(const std::string& input, const std::string& output) {
    ManifestEntry entry;
    entry.input = input;
    entry.inputState = {12, 1'700'000'000'123'456'789};
    entry.settings = "0123";
    entry.outputs = {{(real / output).native(), {34, -5}, 0}};
    entry.seconds = 0.25;
    return entry;
  }
  std::vector<ManifestEntry> All(const Manifest& which) {
    std::vector<ManifestEntry> entries;
    which.Read(0, [&](const ManifestEntry& entry) { entries.push_back(entry); });
    return entries;
  }
  std::string Bytes() { return ReadBytes(scratch / "log.jsonl"); }

  Scratch scratch;
  const std::filesystem::path real = std::filesystem::canonical(scratch.Folder());
  Manifest manifest{scratch / "log.jsonl"};
};

TEST_F(Manifests, LinesAreJsonThatOtherProgramsRead) {
  manifest.Open();
  manifest.Append(manifest.LineOf(Entry("/in/a.jpg", "sub/a.png")));
  const auto json = nlohmann::json::parse(Bytes());
  EXPECT_EQ(json["input"], "/in/a.jpg");
  EXPECT_EQ(json["size"], 12);
  EXPECT_EQ(json["time"], 1'700'000'000'123'456'789);
  EXPECT_EQ(json["settings"], "0123");
  EXPECT_EQ(json["outputs"][0]["file"], "sub/a.png");
  EXPECT_EQ(json["outputs"][0]["size"], 34);
  EXPECT_EQ(json["outputs"][0]["time"], -5);
  EXPECT_FALSE(json["outputs"][0].contains("inode"));
  EXPECT_EQ(json["seconds"], 0.25);
  EXPECT_EQ(json["result"], "written");
  EXPECT_TRUE(Bytes().ends_with("}\n"));
}

TEST_F(Manifests, NamesOfAnyBytesComeBack) {
  manifest.Open();
  const std::string odd = "/in/caf\xE9\n\"\\.jpg", accent = "/in/caf\xC3\xA9.jpg";
  manifest.Append(manifest.LineOf(Entry(odd, "a\xFF.png")) +
                  manifest.LineOf(Entry(accent, "b.png")));
  EXPECT_NE(Bytes().find("{\"bytes\":\"2f696e2f636166e90a225c2e6a7067\"}"), std::string::npos);
  const auto entries = All(manifest);
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].input, odd);
  EXPECT_EQ(entries[0].outputs[0].file, (real / "a\xFF.png").native());
  EXPECT_EQ(entries[1].input, accent);
  EXPECT_EQ(entries[1].outputs[0].state, (FileState{34, -5}));
  EXPECT_EQ(entries[1].inputState, (FileState{12, 1'700'000'000'123'456'789}));
}

TEST_F(Manifests, ALineThatACrashCutOffIsTakenAway) {
  const std::string whole = manifest.LineOf(Entry("/in/a.jpg", "a.png"));
  const std::string next = manifest.LineOf(Entry("/in/b.jpg", "b.png"));
  for (size_t kept = 0; kept < next.size(); ++kept) {
    WriteBytes(scratch / "log.jsonl", whole + next.substr(0, kept));
    EXPECT_EQ(All(manifest).size(), 1U);
    Manifest again(scratch / "log.jsonl");
    again.Open();
    again.Append(next);
    ASSERT_EQ(Bytes(), whole + next) << kept;
  }
  // Of a first line, too, and of one longer than what is looked at in one step.
  for (const size_t length : {5U, 4096U, 20'000U}) {
    WriteBytes(scratch / "log.jsonl", std::string(length, 'x'));
    Manifest again(scratch / "log.jsonl");
    again.Open();
    again.Append(next);
    ASSERT_EQ(Bytes(), next);
  }
}

TEST_F(Manifests, LinesOfOthersArePassedOver) {
  WriteBytes(scratch / "log.jsonl", "\nnull\n[1]\n{}\n{\"result\":\"odd\"}\nnot json\n\xFF\n" +
                                        manifest.LineOf(Entry("/in/a.jpg", "a.png")));
  EXPECT_EQ(All(manifest).size(), 1U);
  EXPECT_EQ(All(Manifest(scratch / "gone/log.jsonl")).size(), 0U);
}

TEST_F(Manifests, RunsThatAppendAtATimeKeepEachOthersLines) {
  std::vector<std::thread> threads;
  for (int run = 0; run < 4; ++run)
    threads.emplace_back([&, run] {
      Manifest own(scratch / "log.jsonl");
      own.Open();
      for (int i = 0; i < 50; ++i)
        own.Append(own.LineOf(Entry("/in/" + std::to_string(run) + "-" + std::to_string(i), "x")));
    });
  for (std::thread& thread : threads) thread.join();
  std::set<std::string> inputs;
  for (const ManifestEntry& entry : All(manifest)) inputs.insert(entry.input);
  EXPECT_EQ(inputs.size(), 200U);
}

TEST_F(Manifests, IsARegularFile) {
  Manifest device("/dev/null"), missing(scratch / "gone/log.jsonl");
  EXPECT_THROW(device.Open(), Failure);
  EXPECT_THROW(missing.Open(), Failure);
}

TEST_F(Manifests, TheIndexKnowsTheLatestEntryOfAnOutput) {
  manifest.Open();
  ManifestEntry failed = Entry("/in/c.jpg", "a.png");
  failed.result = ManifestEntry::Result::kFailed;
  ManifestEntry later = Entry("/in/b.jpg", "a.png");
  later.settings = "4567";
  manifest.Append(manifest.LineOf(Entry("/in/a.jpg", "a.png")) +
                  manifest.LineOf(Entry("/in/z.jpg", "z.png")) + manifest.LineOf(later) +
                  manifest.LineOf(failed));
  ManifestIndex index;
  index.Read(manifest);
  const ManifestRecord* record = index.Find((real / "a.png").native());
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->input, HashOfPath("/in/b.jpg"));
  EXPECT_EQ(record->settings, index.SettingsNumber("4567"));
  EXPECT_EQ(index.Find((real / "b.png").native()), nullptr);
  // What comes later counts as well, when it is read.
  manifest.Append(manifest.LineOf(Entry("/in/d.jpg", "a.png")));
  index.Read(manifest);
  EXPECT_EQ(index.Find((real / "a.png").native())->input, HashOfPath("/in/d.jpg"));
  EXPECT_EQ(index.Find((real / "z.png").native())->input, HashOfPath("/in/z.jpg"));
  EXPECT_FALSE(index.SettingsNumber("89").has_value());
}

}  // namespace
}  // namespace runner
