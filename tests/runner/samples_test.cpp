#include "runner/samples.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cstring>
#include <fstream>

#include "runner/failure.h"
#include "tests/runner/scratch.h"

namespace runner {
namespace {

// Writes frames of whole numbers with 31 bits after the sign, or of real ones.
void WriteSound(const std::string& path, int format, int channels, const std::vector<int>& values) {
  SF_INFO info{};
  info.samplerate = 8000;
  info.channels = channels;
  info.format = format;
  SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
  ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
  EXPECT_EQ(sf_write_int(file, values.data(), sf_count_t(values.size())),
            sf_count_t(values.size()));
  sf_close(file);
}
void WriteSound(const std::string& path, int format, const std::vector<double>& values) {
  SF_INFO info{};
  info.samplerate = 8000;
  info.channels = 1;
  info.format = format;
  SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
  ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
  EXPECT_EQ(sf_write_double(file, values.data(), sf_count_t(values.size())),
            sf_count_t(values.size()));
  sf_close(file);
}

template <class T>
std::vector<T> As(const Samples& samples) {
  std::vector<T> values(samples.bytes.size() / sizeof(T));
  std::memcpy(values.data(), samples.bytes.data(), values.size() * sizeof(T));
  return values;
}

std::string ErrorOf(const std::string& path, int32_t channel = 0) {
  try {
    LoadSamples(path, channel);
  } catch (const Failure& failure) {
    return failure.what();
  }
  ADD_FAILURE() << path << " was accepted";
  return "";
}

TEST(Samples, EightAndSixteenBitsStayAsTheyAre) {
  const Scratch scratch;
  std::vector<int> bytes, words;
  for (int i = -128; i < 128; ++i) bytes.push_back(i << 24);
  for (int i = -32768; i < 32768; i += 17) words.push_back(i << 16);

  WriteSound(scratch / "u8.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 1, bytes);
  Samples samples = LoadSamples(scratch / "u8.wav");
  EXPECT_EQ(samples.bits, 8);
  ASSERT_EQ(samples.count, 256);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(samples.bytes[size_t(i)], i);

  WriteSound(scratch / "s8.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_S8, 1, bytes);
  samples = LoadSamples(scratch / "s8.aiff");
  EXPECT_EQ(samples.bits, 7);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(As<int8_t>(samples)[size_t(i)], i - 128);

  for (const int format : {SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_FLAC | SF_FORMAT_PCM_16}) {
    WriteSound(scratch / "s16", format, 1, words);
    samples = LoadSamples(scratch / "s16");
    EXPECT_EQ(samples.bits, 15);
    ASSERT_EQ(size_t(samples.count), words.size());
    for (size_t i = 0; i < words.size(); ++i) ASSERT_EQ(As<int16_t>(samples)[i], words[i] >> 16);
  }
}

TEST(Samples, WiderOnesBecomeFloatingPointThatHoldsThem) {
  const Scratch scratch;
  const std::vector<int> values = {0, 0x7FFFFF00, INT32_MIN, 0x12345600, -256};
  WriteSound(scratch / "s24.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 1, values);
  Samples samples = LoadSamples(scratch / "s24.wav");
  EXPECT_EQ(samples.bits, -32);
  ASSERT_EQ(samples.bytes.size(), values.size() * 4);
  for (size_t i = 0; i < values.size(); ++i)
    EXPECT_EQ(As<float>(samples)[i], float(values[i]) / 2147483648.0F);

  const std::vector<int> wide = {1, INT32_MAX, INT32_MIN, -1};
  WriteSound(scratch / "s32.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_32, 1, wide);
  samples = LoadSamples(scratch / "s32.wav");
  EXPECT_EQ(samples.bits, -64);
  for (size_t i = 0; i < wide.size(); ++i)
    EXPECT_EQ(As<double>(samples)[i], double(wide[i]) / 2147483648.0);
}

TEST(Samples, FloatingPointStays) {
  const Scratch scratch;
  const std::vector<double> values = {0, 1, -1, 0.1, -2.5};
  WriteSound(scratch / "f.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, values);
  EXPECT_EQ(LoadSamples(scratch / "f.wav").bits, -32);
  EXPECT_EQ(As<float>(LoadSamples(scratch / "f.wav")), (std::vector<float>{0, 1, -1, 0.1F, -2.5F}));
  WriteSound(scratch / "d.wav", SF_FORMAT_WAV | SF_FORMAT_DOUBLE, values);
  EXPECT_EQ(LoadSamples(scratch / "d.wav").bits, -64);
  EXPECT_EQ(As<double>(LoadSamples(scratch / "d.wav")), values);
}

TEST(Samples, ChannelsAreMixedOrChosen) {
  const Scratch scratch;
  std::vector<int> frames;
  for (int i = 0; i < 10'000; ++i) {
    frames.push_back((i % 1000) << 16);
    frames.push_back(-(i % 500) * 2 * 65536);
  }
  WriteSound(scratch / "stereo.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 2, frames);
  const std::vector<int16_t> left = As<int16_t>(LoadSamples(scratch / "stereo.wav", 1));
  const std::vector<int16_t> right = As<int16_t>(LoadSamples(scratch / "stereo.wav", 2));
  const std::vector<int16_t> mean = As<int16_t>(LoadSamples(scratch / "stereo.wav"));
  ASSERT_EQ(mean.size(), 10'000U);
  for (int i = 0; i < 10'000; ++i) {
    ASSERT_EQ(left[size_t(i)], i % 1000);
    ASSERT_EQ(right[size_t(i)], -(i % 500) * 2);
    ASSERT_NEAR(mean[size_t(i)], (i % 1000 - i % 500 * 2) / 2.0, 0.5);
  }
  EXPECT_EQ(ErrorOf(scratch / "stereo.wav", 3),
            "'" + (scratch / "stereo.wav") + "' has no channel 3; it has 2");
}

TEST(Samples, WhatIsNoSoundIsRefused) {
  const Scratch scratch;
  std::ofstream(scratch / "text.wav") << "not a sound at all, but long enough to be looked at";
  EXPECT_NE(ErrorOf(scratch / "text.wav").find("isn't a sound file that can be opened"),
            std::string::npos);
  EXPECT_NE(ErrorOf(scratch / "missing.wav").find("No such file or directory"), std::string::npos);
  WriteSound(scratch / "empty.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, std::vector<int>{});
  EXPECT_NE(ErrorOf(scratch / "empty.wav").find("holds no samples"), std::string::npos);
}

}  // namespace
}  // namespace runner
