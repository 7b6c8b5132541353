// Colours, search, composition by OpenCV.
#include "bench/parameters.h"
#include "bench/peers/opencv.h"

namespace bench::opencv {

namespace {

// Pixels of one colour, whatever their fourth byte.
void FindColour(const Mat& picture, uint32_t colour, Mat& found) {
  cv::inRange(picture, PixelOf(colour, 0), PixelOf(colour, 255), found);
}

Run Count(Job job) {
  Mat found;
  return [=]() mutable {
    FindColour(job.in[0], kSearchColour, found);
    *job.number = cv::countNonZero(found);
  };
}

Run Histograms(Job job) {
  std::vector<Mat> histograms(3);
  return [=]() mutable {
    const int size = 256;
    const float range[] = {0, 256};
    const float* ranges = range;
    for (int channel = 0; channel < 3; ++channel) {
      cv::calcHist(&job.in[0], 1, &channel, Mat(), histograms[channel], 1, &size, &ranges);
    }
  };
}

Run Tables(Job job) {
  Mat tables(1, 256, CV_8UC4);
  for (int value = 0; value < 256; ++value) {
    tables.at<cv::Vec4b>(0, value) = {TableEntry(0, value), TableEntry(1, value),
                                      TableEntry(2, value), static_cast<uint8_t>(value)};
  }
  return [=]() mutable { cv::LUT(job.in[0], tables, job.to); };
}

Run Replace(Job job) {
  Mat found;
  return [=]() mutable {
    FindColour(job.in[0], kSearchColour, found);
    job.in[0].copyTo(job.to);
    job.to.setTo(PixelOf(kReplacement), found);
  };
}

Run Extract(Job job) {
  Mat found;
  return [=]() mutable {
    FindColour(job.in[0], kSearchColour, found);
    job.to.setTo(PixelOf(kBackground));
    job.to.setTo(PixelOf(kReplacement), found);
  };
}

auto IsAll(uint32_t colour) {
  return [colour](Job job) -> Run {
    Mat found;
    return [=]() mutable {
      FindColour(job.in[0], colour, found);
      *job.number = cv::countNonZero(found) == static_cast<int>(job.in[0].total());
    };
  };
}

// The largest difference between two channels at most the tolerance.
auto IsGrey(int tolerance) {
  return [tolerance](Job job) -> Run {
    std::vector<Mat> planes;
    Mat most, least;
    return [=]() mutable {
      cv::split(job.in[0], planes);
      cv::max(planes[0], planes[1], most);
      cv::max(planes[2], most, most);
      cv::min(planes[0], planes[1], least);
      cv::min(planes[2], least, least);
      cv::subtract(most, least, most);
      double largest = 0;
      cv::minMaxLoc(most, nullptr, &largest);
      *job.number = largest <= tolerance;
    };
  };
}

// Places of the needle's first pixel, then comparisons there.
Run SearchFirstPixel(Job job, int32_t side) {
  Mat found;
  std::vector<cv::Point> places;
  return [=]() mutable {
    const Mat words(job.in[0].rows, job.in[0].cols, CV_32S, job.in[0].data, job.in[0].step);
    const int first = *reinterpret_cast<const int*>(job.in[1].data);
    cv::compare(words, first, found, cv::CMP_EQ);
    cv::findNonZero(found, places);
    const Mat needle(side, side, CV_8UC4, job.in[1].data, static_cast<size_t>(side) * 4);
    for (const cv::Point& place : places) {
      if (place.x + side > words.cols || place.y + side > words.rows) continue;
      const Mat here = job.in[0](cv::Rect(place.x, place.y, side, side));
      if (cv::norm(here, needle, cv::NORM_INF) == 0) break;
    }
  };
}

// Where the first pixel is everywhere: the sum of squared differences at every place.
Run SearchTemplate(Job job, int32_t side) {
  Mat difference;
  return [=]() mutable {
    const Mat needle(side, side, CV_8UC4, job.in[1].data, static_cast<size_t>(side) * 4);
    cv::matchTemplate(job.in[0], needle, difference, cv::TM_SQDIFF);
    cv::minMaxLoc(difference, nullptr, nullptr);
  };
}

// The needle is as large as the search's cases make it.
int32_t NeedleSide(const Job& job) {
  return std::min({64, job.in[0].cols / 2, job.in[0].rows / 2});
}

// Connected groups of coloured pixels, each covered with its rectangle.
Run RectangleMask(Job job) {
  std::vector<Mat> planes;
  Mat redGreen, greenBlue, labels, stats, centres;
  return [=]() mutable {
    cv::split(job.in[0], planes);
    cv::compare(planes[0], planes[1], redGreen, cv::CMP_NE);
    cv::compare(planes[1], planes[2], greenBlue, cv::CMP_NE);
    cv::bitwise_or(redGreen, greenBlue, redGreen);
    const int count = cv::connectedComponentsWithStats(redGreen, labels, stats, centres, 4);
    job.to.setTo(PixelOf(0xFFFFFF));
    for (int i = 1; i < count; ++i) {
      const int* of = stats.ptr<int>(i);
      const cv::Rect box(of[cv::CC_STAT_LEFT], of[cv::CC_STAT_TOP], of[cv::CC_STAT_WIDTH],
                         of[cv::CC_STAT_HEIGHT]);
      job.to(box).setTo(PixelOf(0));
    }
  };
}

// Into another picture, part by part.
auto Scroll(bool horizontal, bool vertical) {
  return [=](Job job) -> Run {
    const int right = horizontal ? ScrollBy(job.in[0].cols) : 0;
    const int down = vertical ? ScrollBy(job.in[0].rows) : 0;
    return [=]() mutable {
      const int width = job.in[0].cols;
      const int height = job.in[0].rows;
      const int columns[] = {0, width - right, width};
      const int rows[] = {0, height - down, height};
      for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 2; ++j) {
          const cv::Rect from(columns[i], rows[j], columns[i + 1] - columns[i],
                              rows[j + 1] - rows[j]);
          if (from.empty()) continue;
          const cv::Rect to((from.x + right) % width, (from.y + down) % height, from.width,
                            from.height);
          job.in[0](from).copyTo(job.to(to));
        }
      }
    };
  };
}

Run Merge(Job job) {
  return [=]() mutable { cv::max(job.in[0], job.in[1], job.to); };
}

Run Combine(Job job) {
  return [=]() mutable {
    // Red of the first, green of the second, blue and alpha of the third.
    const int pairs[] = {0, 0, 5, 1, 10, 2, 11, 3};
    cv::mixChannels(job.in.data(), 3, &job.to, 1, pairs, 4);
  };
}

auto ReplaceChannel(int channel) {
  return [channel](Job job) -> Run {
    return [=]() mutable {
      job.in[0].copyTo(job.to);
      const int pair[] = {channel, channel};
      cv::mixChannels(&job.in[1], 1, &job.to, 1, pair, 1);
    };
  };
}

Run GetMask(Job job) {
  Mat alpha;
  return [=]() mutable {
    cv::extractChannel(job.in[0], alpha, 3);
    cv::cvtColor(alpha, job.to, cv::COLOR_GRAY2RGBA);
  };
}

Run SetMask(Job job) {
  return [=]() mutable {
    const int pair[] = {0, 0};
    cv::mixChannels(&job.in[0], 1, &job.to, 1, pair, 1);
  };
}

Run ToBytes(Job job) {
  Mat bytes(job.to.rows, job.to.cols, CV_8UC3, job.to.data);
  return [=]() mutable { cv::cvtColor(job.in[0], bytes, cv::COLOR_RGBA2RGB); };
}

Run FromBytes(Job job) {
  const Mat bytes(job.to.rows, job.to.cols, CV_8UC3, job.in[0].data);
  return [=]() mutable { cv::cvtColor(bytes, job.to, cv::COLOR_RGB2RGBA); };
}

Run Sepia(Job job) {
  const Mat matrix = (cv::Mat_<float>(4, 5) << .299, .587, .114, 0, kSepiaOffsets[0],  //
                      .299, .587, .114, 0, kSepiaOffsets[1],                           //
                      .299, .587, .114, 0, kSepiaOffsets[2],                           //
                      0, 0, 0, 0, 255);
  return [=]() mutable { cv::transform(job.in[0], job.to, matrix); };
}

}  // namespace

std::vector<Peer> OtherPeers() {
  return {
      Make("CountColorKRT", Count),
      Make("CountColorsKRT", Histograms),
      Make("TransformColorsKRT", Tables),
      Make("ReplaceColorKRT", Replace),
      Make("ExtractColorKRT", Extract),
      Make("isBlackKRT", IsAll(0)),
      Make("isWhiteKRT", IsAll(0xFFFFFF)),
      Make("isGrayKRT", IsGrey(0)),
      Make("isGrayKRT tolerance", IsGrey(kGreyTolerance)),
      Make("FindPictureKRT", [](Job job) { return SearchFirstPixel(job, NeedleSide(job)); }),
      Make("FindPictureKRT white page",
           [](Job job) { return SearchTemplate(job, NeedleSide(job)); }),
      Make("ExtractColorRectangleMaskKRT", RectangleMask),
      Make("ExtractColorRectangleMaskKRT dots", RectangleMask),
      Make("ScrollHorizontalKRT", Scroll(true, false)),
      Make("ScrollVerticalKRT", Scroll(false, true)),
      Make("ScrollKRT", Scroll(true, true)),
      Make("MergePictureKRT", Merge),
      Make("CombinePicturesKRT", Combine),
      Make("ReplaceRedChannelKRT", ReplaceChannel(0)),
      Make("ReplaceGreenChannelKRT", ReplaceChannel(1)),
      Make("ReplaceBlueChannelKRT", ReplaceChannel(2)),
      Make("EmbeddedMaskKRT", GetMask),
      Make("EmbeddedMaskKRT assignment", SetMask),
      Make("PicturetoBinaryStringKRT", ToBytes),
      Make("BinaryStringtoPictureKRT", FromBytes),
      Make("PictureSepiaKRT", Sepia),
  };
}

}  // namespace bench::opencv

std::vector<bench::Peer> bench::OpenCvPeers() {
  std::vector<Peer> peers = opencv::TonalPeers();
  for (Peer& peer : opencv::OtherPeers()) peers.push_back(std::move(peer));
  return peers;
}
