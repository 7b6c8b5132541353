#include "runner/samples.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

#include "runner/failure.h"
#include "runner/files.h"
#include "runner/names.h"

namespace runner {
namespace {

struct CloseSound {
  void operator()(SNDFILE* file) const { sf_close(file); }
};

// The Bits value that holds the file's samples without loss.
int32_t BitsFor(int format) {
  switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
      return 7;
    case SF_FORMAT_PCM_U8:
      return 8;
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_ALAC_32:
    case SF_FORMAT_DOUBLE:
      return -64;
    case SF_FORMAT_PCM_24:
    case SF_FORMAT_ALAC_20:
    case SF_FORMAT_ALAC_24:
    case SF_FORMAT_FLOAT:
    case SF_FORMAT_VORBIS:
    case SF_FORMAT_OPUS:
    case SF_FORMAT_MPEG_LAYER_I:
    case SF_FORMAT_MPEG_LAYER_II:
    case SF_FORMAT_MPEG_LAYER_III:
      return -32;
    default:
      return 15;  // 16-bit, and what decodes to at most that
  }
}

template <class T>
void Append(std::vector<uint8_t>* bytes, T value) {
  const size_t end = bytes->size();
  bytes->resize(end + sizeof value);
  std::memcpy(bytes->data() + end, &value, sizeof value);
}

// A sample as libsndfile gives it, -1 to 1 with 1 at 2^(bits - 1), in the form that `bits` names.
void AppendSample(std::vector<uint8_t>* bytes, double value, int32_t bits) {
  const auto whole = [&](double scale) {
    return static_cast<int32_t>(std::clamp(std::nearbyint(value * scale), -scale, scale - 1));
  };
  if (std::isnan(value) && bits > 0) value = 0;
  switch (bits) {
    case 7:
      return Append(bytes, static_cast<int8_t>(whole(128)));
    case 8:
      return Append(bytes, static_cast<uint8_t>(whole(128) + 128));
    case 15:
      return Append(bytes, static_cast<int16_t>(whole(32768)));
    case -32:
      return Append(bytes, static_cast<float>(value));
    default:
      return Append(bytes, value);
  }
}

}  // namespace

Samples LoadSamples(const std::filesystem::path& path, int32_t channel) {
  RequireRegularFile(path);
  SF_INFO info{};
  const std::unique_ptr<SNDFILE, CloseSound> file(sf_open(path.c_str(), SFM_READ, &info));
  if (file == nullptr)
    throw Failure(Quoted(path.native()) +
                  " isn't a sound file that can be opened: " + sf_strerror(nullptr));
  if (channel < 0 || channel > info.channels)
    throw Failure(Quoted(path.native()) + " has no channel " + std::to_string(channel) +
                  "; it has " + std::to_string(info.channels));

  Samples samples;
  samples.bits = BitsFor(info.format);
  // The header's length isn't believed: what the file holds decides.
  const auto channels = static_cast<size_t>(info.channels);
  constexpr sf_count_t kFrames = 4096;
  std::vector<double> frames(kFrames * channels);
  sf_count_t got = 0;
  while ((got = sf_readf_double(file.get(), frames.data(), kFrames)) > 0) {
    for (size_t frame = 0; frame < static_cast<size_t>(got); ++frame) {
      const double* values = frames.data() + frame * channels;
      double value = channel > 0 ? values[channel - 1] : 0;
      for (size_t i = 0; channel == 0 && i < channels; ++i) value += values[i];
      if (channel == 0) value /= static_cast<double>(channels);
      AppendSample(&samples.bytes, value, samples.bits);
    }
    if (samples.bytes.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max()))
      throw Failure(Quoted(path.native()) + " holds more than 2 GiB of samples");
    samples.count += static_cast<int32_t>(got);
  }
  if (sf_error(file.get()) != SF_ERR_NO_ERROR)
    throw Failure("can't read " + Quoted(path.native()) + ": " + sf_strerror(file.get()));
  if (samples.count == 0) throw Failure(Quoted(path.native()) + " holds no samples");
  return samples;
}

}  // namespace runner
