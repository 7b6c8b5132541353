// What OpenCV's part of the comparison shares.
#pragma once

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/peers/peers.h"

namespace bench::opencv {

using cv::Mat;
using cv::Scalar;
using Run = std::function<void()>;

// What an operation is given: pictures of four channels, red first.
struct Job {
  std::vector<Mat> in;
  Mat to;
  double* number;
};

inline Mat Rows(const uint8_t* first, const Area& area) {
  return Mat(static_cast<int>(area.rows), static_cast<int>(area.rowSize / 4), CV_8UC4,
             const_cast<uint8_t*>(first), area.stride);
}

// `body` makes the operation; it keeps what it needs between calls.
template <class Body>
Peer Make(const char* operation, const Body& body) {
  return {operation, "OpenCV", [body](const Area& area) -> Run {
            cv::setNumThreads(1);
            Job job{{}, {}, area.number};
            for (const uint8_t* source : area.sources) job.in.push_back(Rows(source, area));
            if (area.target != nullptr) job.to = Rows(area.target, area);
            return body(job);
          }};
}

// 0x00RRGGBB as a pixel, opaque or of the fourth byte given.
inline Scalar PixelOf(uint32_t colour, double fourth = 255) {
  return Scalar(colour >> 16 & 255, colour >> 8 & 255, colour & 255, fourth);
}

std::vector<Peer> TonalPeers();
std::vector<Peer> OtherPeers();

}  // namespace bench::opencv
