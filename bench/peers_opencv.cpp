#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/parameters.h"
#include "bench/peers.h"

namespace bench {

namespace {

using cv::Mat;
using cv::Scalar;
using Run = std::function<void()>;

volatile double gSink;

Mat Rows(const uint8_t* first, const Area& area) {
  return Mat(static_cast<int>(area.rows), static_cast<int>(area.rowSize / 4), CV_8UC4,
             const_cast<uint8_t*>(first), area.stride);
}

// An operation from sources to the target; `body` keeps what it needs between calls.
template <class Body>
Peer Make(const char* operation, const Body& body) {
  return {operation, "OpenCV", [body](const Area& area) -> Run {
            cv::setNumThreads(1);
            std::vector<Mat> sources;
            for (const uint8_t* source : area.sources) sources.push_back(Rows(source, area));
            Mat target = area.target != nullptr ? Rows(area.target, area) : Mat();
            return body(sources, target);
          }};
}

Run Inverted(const std::vector<Mat>& in, const Mat& target) {
  return [=, to = target]() mutable { cv::bitwise_xor(in[0], Scalar(255, 255, 255, 0), to); };
}

// Grey where red equals green and green blue.
Run GreyInverted(const std::vector<Mat>& in, const Mat& target) {
  std::vector<Mat> planes;
  Mat redGreen, greenBlue, inverse;
  return [=, to = target]() mutable {
    cv::split(in[0], planes);
    cv::compare(planes[0], planes[1], redGreen, cv::CMP_EQ);
    cv::compare(planes[1], planes[2], greenBlue, cv::CMP_EQ);
    cv::bitwise_and(redGreen, greenBlue, redGreen);
    in[0].copyTo(to);
    cv::bitwise_xor(in[0], Scalar(255, 255, 255, 0), to, Mat());
    cv::bitwise_not(redGreen, redGreen);
    in[0].copyTo(to, redGreen);
  };
}

// The same factor and offset for every channel, alpha included.
auto Linear(double factor, double offset) {
  return [=](const std::vector<Mat>& in, const Mat& target) -> Run {
    return [=, to = target]() mutable { in[0].convertTo(to, CV_8U, factor, offset); };
  };
}

Run Brighter(const std::vector<Mat>& in, const Mat& target) {
  return [=, to = target]() mutable {
    cv::add(in[0], Scalar(kBrightness, kBrightness, kBrightness, 0), to);
  };
}

// Each channel with its own factor and offset.
auto Channels(const std::array<double, 3>& factors, const std::array<double, 3>& offsets) {
  return [=](const std::vector<Mat>& in, const Mat& target) -> Run {
    const Mat matrix = (cv::Mat_<float>(4, 5) << factors[0], 0, 0, 0, offsets[0],  //
                        0, factors[1], 0, 0, offsets[1],                           //
                        0, 0, factors[2], 0, offsets[2],                           //
                        0, 0, 0, 1, 0);
    return [=, to = target]() mutable { cv::transform(in[0], to, matrix); };
  };
}

Run Saturated(const std::vector<Mat>& in, const Mat& target) {
  const double push = 1 + kSaturation / 255.0;
  const double r = (1 - push) / 4;
  const double g = (1 - push) / 2;
  const Mat matrix = (cv::Mat_<float>(4, 4) << push + r, g, r, 0,  //
                      r, push + g, r, 0,                           //
                      r, g, push + r, 0,                           //
                      0, 0, 0, 1);
  return [=, to = target]() mutable { cv::transform(in[0], to, matrix); };
}

Run Tinted(const std::vector<Mat>& in, const Mat& target) {
  const auto part = [](uint32_t colour, int shift) { return (colour >> shift & 255) / 255.0; };
  Mat matrix = Mat::zeros(4, 5, CV_32F);
  for (int to = 0; to < 3; ++to) {
    for (int from = 0; from < 3; ++from) {
      matrix.at<float>(to, from) =
          static_cast<float>(part(kSepiaBase, 16 - 8 * to) * part(kGreyBase, 16 - 8 * from));
    }
  }
  matrix.at<float>(3, 4) = 255;
  return [=, to = target]() mutable { cv::transform(in[0], to, matrix); };
}

Run Colourful(const std::vector<Mat>& in, const Mat&) {
  std::vector<Mat> planes;
  Mat overRed, overBlue, dark;
  return [=]() mutable {
    cv::split(in[0], planes);
    cv::absdiff(planes[1], planes[0], overRed);
    cv::absdiff(planes[1], planes[2], overBlue);
    cv::max(overRed, overBlue, overRed);
    cv::compare(overRed, kColornessThreshold, overRed, cv::CMP_GT);
    cv::max(planes[0], planes[1], dark);
    cv::max(planes[2], dark, dark);
    cv::compare(dark, 29, dark, cv::CMP_GT);
    cv::bitwise_and(overRed, dark, overRed);
    gSink = cv::countNonZero(overRed);
  };
}

// (v - 127) * (contrast + 1) + 127
constexpr double PivotOffset(double contrast) { return 127 - 127 * (contrast + 1); }

}  // namespace

std::vector<Peer> OpenCvPeers() {
  const double r = kPerChannel[0];
  const double g = kPerChannel[1];
  const double b = kPerChannel[2];
  return {
      Make("InvertKRT", Inverted),
      Make("InvertGrayKRT", GreyInverted),
      Make("ChangeContrastKRT", Linear(kContrast + 1, PivotOffset(kContrast))),
      Make("ChangeContrastKRT channels",
           Channels({r + 1, g + 1, b + 1}, {PivotOffset(r), PivotOffset(g), PivotOffset(b)})),
      Make("ChangeCustomKRT", Linear(kFactor, kOffset)),
      Make("ChangeBrightnessAbsoluteKRT", Brighter),
      Make("ChangeBrightnessLinearKRT", Linear((255 - kBrightness) / 255, kBrightness)),
      Make("ChangeContrastBrightnessAbsoluteKRT channels",
           Channels({r + 1, g + 1, b + 1},
                    {PivotOffset(r) + kBrightness, PivotOffset(g), PivotOffset(b) - kBrightness})),
      Make("ChangeSaturationKRT", Saturated),
      Make("TintPictureKRT", Tinted),
      Make("ColornessKRT", Colourful),
  };
}

}  // namespace bench
