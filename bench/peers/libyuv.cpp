// libyuv's pixels are B, G, R, A in memory; where it matters, its channels are asked for in the
// places that ours have.
#include <libyuv.h>

#include <algorithm>
#include <array>

#include "bench/parameters.h"
#include "bench/peers/peers.h"

namespace bench {

namespace {

using Run = std::function<void()>;

struct Job {
  const uint8_t* from;
  uint8_t* to;
  int fromStride;
  int toStride;
  int width;
  int height;
};

template <class Body>
Peer Make(const char* operation, const Body& body) {
  return {operation, "libyuv", [body](const Area& area) -> Run {
            const int stride = static_cast<int>(area.stride);
            return body(Job{area.sources[0], area.target, stride, stride,
                            static_cast<int>(area.rowSize / 4), static_cast<int>(area.rows)});
          }};
}

// Operations that work in place are done strip by strip on a copy, so that it stays in the cache.
template <class Body>
Run InStrips(const Job& job, const Body& body) {
  return [=] {
    constexpr int kStrip = 8;
    for (int y = 0; y < job.height; y += kStrip) {
      const int rows = std::min(kStrip, job.height - y);
      const uint8_t* from = job.from + static_cast<ptrdiff_t>(y) * job.fromStride;
      uint8_t* to = job.to + static_cast<ptrdiff_t>(y) * job.toStride;
      libyuv::ARGBCopy(from, job.fromStride, to, job.toStride, job.width, rows);
      body(to, job.toStride, job.width, rows);
    }
  };
}

// In 64ths; a row gives one channel of the result.
using Matrix = std::array<int8_t, 16>;

Run Coloured(const Job& job, const Matrix& matrix) {
  return [=] {
    libyuv::ARGBColorMatrix(job.from, job.fromStride, job.to, job.toStride, matrix.data(),
                            job.width, job.height);
  };
}

int8_t In64ths(double value) { return static_cast<int8_t>(value * 64 + (value < 0 ? -.5 : .5)); }

Run Saturated(const Job& job) {
  const double push = 1 + kSaturation / 255.0;
  const double r = (1 - push) / 4;
  const double g = (1 - push) / 2;
  const double rows[3][3] = {{push + r, g, r}, {r, push + g, r}, {r, g, push + r}};
  Matrix matrix{};
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) matrix[i * 4 + j] = In64ths(rows[i][j]);
  }
  matrix[15] = 64;
  return Coloured(job, matrix);
}

Run Tinted(const Job& job) {
  const auto part = [](uint32_t colour, size_t channel) {
    return (colour >> (16 - 8 * channel) & 255) / 255.0;
  };
  Matrix matrix{};
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      matrix[i * 4 + j] = In64ths(part(kSepiaBase, i) * part(kGreyBase, j));
    }
  }
  matrix[15] = 64;
  return Coloured(job, matrix);
}

Run Tables(const Job& job) {
  std::array<uint8_t, 1024> tables;
  for (int value = 0; value < 256; ++value) {
    for (int channel = 0; channel < 4; ++channel) {
      tables[static_cast<size_t>(value * 4 + channel)] =
          channel == 3 ? static_cast<uint8_t>(value) : TableEntry(channel, value);
    }
  }
  return InStrips(job, [=](uint8_t* at, int stride, int width, int rows) {
    libyuv::ARGBColorTable(at, stride, tables.data(), 0, 0, width, rows);
  });
}

Run Sepia(const Job& job) {
  return InStrips(job, [](uint8_t* at, int stride, int width, int rows) {
    libyuv::ARGBSepia(at, stride, 0, 0, width, rows);
  });
}

Run GetMask(const Job& job) {
  std::vector<uint8_t> alpha(static_cast<size_t>(job.width));
  return [=]() mutable {
    for (int y = 0; y < job.height; ++y) {
      libyuv::ARGBExtractAlpha(job.from + static_cast<ptrdiff_t>(y) * job.fromStride,
                               job.fromStride, alpha.data(), job.width, job.width, 1);
      libyuv::J400ToARGB(alpha.data(), job.width, job.to + static_cast<ptrdiff_t>(y) * job.toStride,
                         job.toStride, job.width, 1);
    }
  };
}

Run ToBytes(const Job& job) {
  return [=] {
    libyuv::ARGBToRGB24(job.from, job.fromStride, job.to, job.width * 3, job.width, job.height);
  };
}

Run FromBytes(const Job& job) {
  return [=] {
    libyuv::RGB24ToARGB(job.from, job.width * 3, job.to, job.toStride, job.width, job.height);
  };
}

}  // namespace

std::vector<Peer> LibyuvPeers() {
  return {
      Make("ChangeSaturationKRT", Saturated),
      Make("TintPictureKRT", Tinted),
      Make("TransformColorsKRT", Tables),
      Make("PictureSepiaKRT", Sepia),
      Make("EmbeddedMaskKRT", GetMask),
      Make("PicturetoBinaryStringKRT", ToBytes),
      Make("BinaryStringtoPictureKRT", FromBytes),
  };
}

}  // namespace bench
