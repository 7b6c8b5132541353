// Inversion, brightness and contrast, saturation, tint, colorness by OpenCV.
#include "bench/parameters.h"
#include "bench/peers/opencv.h"

namespace bench::opencv {

namespace {

Run Inverted(Job job) {
  return [=]() mutable { cv::bitwise_xor(job.in[0], Scalar(255, 255, 255, 0), job.to); };
}

// Grey where red equals green and green blue.
Run GreyInverted(Job job) {
  std::vector<Mat> planes;
  Mat redGreen, greenBlue, inverse;
  return [=]() mutable {
    cv::split(job.in[0], planes);
    cv::compare(planes[0], planes[1], redGreen, cv::CMP_EQ);
    cv::compare(planes[1], planes[2], greenBlue, cv::CMP_EQ);
    cv::bitwise_and(redGreen, greenBlue, redGreen);
    job.in[0].copyTo(job.to);
    cv::bitwise_xor(job.in[0], Scalar(255, 255, 255, 0), job.to, Mat());
    cv::bitwise_not(redGreen, redGreen);
    job.in[0].copyTo(job.to, redGreen);
  };
}

// The same factor and offset for every channel, alpha included.
auto Linear(double factor, double offset) {
  return [=](Job job) -> Run {
    return [=]() mutable { job.in[0].convertTo(job.to, CV_8U, factor, offset); };
  };
}

Run Brighter(Job job) {
  return [=]() mutable {
    cv::add(job.in[0], Scalar(kBrightness, kBrightness, kBrightness, 0), job.to);
  };
}

// Each channel with its own factor and offset.
auto Channels(const std::array<double, 3>& factors, const std::array<double, 3>& offsets) {
  return [=](Job job) -> Run {
    const Mat matrix = (cv::Mat_<float>(4, 5) << factors[0], 0, 0, 0, offsets[0],  //
                        0, factors[1], 0, 0, offsets[1],                           //
                        0, 0, factors[2], 0, offsets[2],                           //
                        0, 0, 0, 1, 0);
    return [=]() mutable { cv::transform(job.in[0], job.to, matrix); };
  };
}

Run Saturated(Job job) {
  const double push = 1 + kSaturation / 255.0;
  const double r = (1 - push) / 4;
  const double g = (1 - push) / 2;
  const Mat matrix = (cv::Mat_<float>(4, 4) << push + r, g, r, 0,  //
                      r, push + g, r, 0,                           //
                      r, g, push + r, 0,                           //
                      0, 0, 0, 1);
  return [=]() mutable { cv::transform(job.in[0], job.to, matrix); };
}

Run Tinted(Job job) {
  const auto part = [](uint32_t colour, int shift) { return (colour >> shift & 255) / 255.0; };
  Mat matrix = Mat::zeros(4, 5, CV_32F);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      matrix.at<float>(i, j) =
          static_cast<float>(part(kSepiaBase, 16 - 8 * i) * part(kGreyBase, 16 - 8 * j));
    }
  }
  matrix.at<float>(3, 4) = 255;
  return [=]() mutable { cv::transform(job.in[0], job.to, matrix); };
}

Run Colourful(Job job) {
  std::vector<Mat> planes;
  Mat overRed, overBlue, dark;
  return [=]() mutable {
    cv::split(job.in[0], planes);
    cv::absdiff(planes[1], planes[0], overRed);
    cv::absdiff(planes[1], planes[2], overBlue);
    cv::max(overRed, overBlue, overRed);
    cv::compare(overRed, kColornessThreshold, overRed, cv::CMP_GT);
    cv::max(planes[0], planes[1], dark);
    cv::max(planes[2], dark, dark);
    cv::compare(dark, 29, dark, cv::CMP_GT);
    cv::bitwise_and(overRed, dark, overRed);
    *job.number = cv::countNonZero(overRed) / static_cast<double>(job.in[0].total());
  };
}

// (v - 127) * (contrast + 1) + 127
constexpr double PivotOffset(double contrast) { return 127 - 127 * (contrast + 1); }

}  // namespace

std::vector<Peer> TonalPeers() {
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

}  // namespace bench::opencv
