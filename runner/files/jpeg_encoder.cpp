#include "runner/files/jpeg_encoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <exception>
#include <string_view>
#include <vector>

// The library's header wants <cstdio> before it.
#include <jpeglib.h>

#include "runner/failure.h"
#include "runner/files/iptc.h"

namespace runner {
namespace {

using namespace std::string_view_literals;

constexpr size_t kLongestSegment = 65533;
constexpr int kExifAndXmp = JPEG_APP0 + 1, kResources = JPEG_APP0 + 13;

// The library reports a fault by a jump. The functions that it jumps back to have no objects that
// would have to be destroyed, and nothing is thrown through the library.
class Encoder {
 public:
  explicit Encoder(const ByteSink& sink) : write(sink) {
    encoder.err = jpeg_std_error(&errors);
    errors.error_exit = Stop;
    errors.emit_message = [](j_common_ptr, int) {};
    encoder.client_data = this;
    target.init_destination = [](j_compress_ptr common) { Of(common).Rewind(); };
    target.empty_output_buffer = [](j_compress_ptr common) {
      Of(common).Send(kBuffer);
      Of(common).Rewind();
      return boolean{TRUE};
    };
    target.term_destination = [](j_compress_ptr common) {
      Of(common).Send(kBuffer - Of(common).target.free_in_buffer);
    };
    Check(Create());
  }
  ~Encoder() { jpeg_destroy_compress(&encoder); }
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;

  void Start(const JpegPicture& picture, const JpegSettings& settings,
             const std::optional<Resolution>& resolution) {
    Check(Begin(picture, settings, resolution));
  }
  void AddSegment(int marker, std::string_view bytes) { Check(WriteMarker(marker, bytes)); }
  void AddProfile(const std::string& profile) {
    if (!profile.empty()) Check(WriteProfile(profile));
  }
  void AddRow(const uint8_t* row) { Check(WriteRow(row)); }
  void Finish() { Check(End()); }

 private:
  static constexpr size_t kBuffer = size_t{1} << 16;

  static Encoder& Of(j_compress_ptr common) { return *static_cast<Encoder*>(common->client_data); }
  [[noreturn]] static void Stop(j_common_ptr common) {
    auto& self = *static_cast<Encoder*>(common->client_data);
    common->err->format_message(common, self.message.data());
    std::longjmp(self.back, 1);
  }

  void Rewind() {
    target.next_output_byte = buffer.data();
    target.free_in_buffer = kBuffer;
  }
  void Send(size_t count) {
    if (Write(count)) return;
    std::longjmp(back, 1);
  }
  bool Write(size_t count) {
    try {
      write(buffer.data(), count);
      return true;
    } catch (...) {
      problem = std::current_exception();
      return false;
    }
  }

  void Check(bool done) const {
    if (problem != nullptr) std::rethrow_exception(problem);
    if (!done)
      throw Failure("the picture can't be encoded as JPEG: " + std::string(message.data()));
  }

  bool Create() {
    if (setjmp(back) != 0) return false;
    jpeg_create_compress(&encoder);
    encoder.dest = &target;
    return true;
  }

  bool Begin(const JpegPicture& picture, const JpegSettings& settings,
             const std::optional<Resolution>& resolution) {
    if (setjmp(back) != 0) return false;
    encoder.image_width = static_cast<JDIMENSION>(picture.width);
    encoder.image_height = static_cast<JDIMENSION>(picture.height);
    encoder.input_components = picture.channels;
    encoder.in_color_space = picture.channels == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&encoder);
    jpeg_set_quality(&encoder, settings.quality, TRUE);
    if (settings.fullColour)
      encoder.comp_info[0].h_samp_factor = encoder.comp_info[0].v_samp_factor = 1;
    if (settings.coding != nullptr) Take(*settings.coding);
    if (settings.progressive) jpeg_simple_progression(&encoder);
    if (resolution) {
      constexpr double kMillimetresInInch = 25.4, kMillimetresInCentimetre = 10;
      const double unit = resolution->inches ? kMillimetresInInch : kMillimetresInCentimetre;
      const auto density = [&](double each) {
        return static_cast<UINT16>(std::clamp<long>(std::lround(each * unit), 1, UINT16_MAX));
      };
      encoder.density_unit = resolution->inches ? 1 : 2;
      encoder.X_density = density(resolution->horizontal);
      encoder.Y_density = density(resolution->vertical);
    }
    jpeg_start_compress(&encoder, TRUE);
    return true;
  }

  // Tables and samples of the file that the picture came from.
  void Take(const JpegCoding& coding) {
    const auto channels = static_cast<size_t>(encoder.num_components);
    if (coding.channels.size() < channels) return;
    for (const auto& [number, table] : coding.tables)
      jpeg_add_quant_table(&encoder, number, table.data(), 100, FALSE);
    for (size_t i = 0; i < channels; ++i) {
      jpeg_component_info& info = encoder.comp_info[i];
      info.quant_tbl_no = coding.channels[i].table;
      info.h_samp_factor = channels == 1 ? 1 : coding.channels[i].across;
      info.v_samp_factor = channels == 1 ? 1 : coding.channels[i].down;
    }
  }

  bool WriteMarker(int marker, std::string_view bytes) {
    if (setjmp(back) != 0) return false;
    jpeg_write_marker(&encoder, marker, reinterpret_cast<const JOCTET*>(bytes.data()),
                      static_cast<unsigned>(bytes.size()));
    return true;
  }
  bool WriteProfile(const std::string& profile) {
    if (setjmp(back) != 0) return false;
    jpeg_write_icc_profile(&encoder, reinterpret_cast<const JOCTET*>(profile.data()),
                           static_cast<unsigned>(profile.size()));
    return true;
  }
  bool WriteRow(const uint8_t* row) {
    if (setjmp(back) != 0) return false;
    JSAMPROW rows[1] = {const_cast<JSAMPROW>(row)};  // the library only reads it
    jpeg_write_scanlines(&encoder, rows, 1);
    return true;
  }
  bool End() {
    if (setjmp(back) != 0) return false;
    jpeg_finish_compress(&encoder);
    return true;
  }

  const ByteSink& write;
  std::exception_ptr problem;
  jpeg_compress_struct encoder{};
  jpeg_error_mgr errors{};
  jpeg_destination_mgr target{};
  std::jmp_buf back{};
  std::array<char, JMSG_LENGTH_MAX> message{};
  std::array<JOCTET, kBuffer> buffer{};
};

// Blocks in front of the pixels, as readers look for them.
void AddMetadata(const Metadata& metadata, Encoder* encoder) {
  constexpr std::string_view kXmpStart = "http://ns.adobe.com/xap/1.0/\0"sv;
  if (!metadata.exif.empty() && metadata.exif.size() <= kLongestSegment)
    encoder->AddSegment(kExifAndXmp, metadata.exif);
  if (!metadata.xmp.empty() && metadata.xmp.size() + kXmpStart.size() <= kLongestSegment)
    encoder->AddSegment(kExifAndXmp, std::string(kXmpStart) + metadata.xmp);
  // They go on in the next segment.
  const std::string resources = ResourcesOfResult(metadata.iptc);
  const size_t room = kLongestSegment - kResourcesStart.size();
  for (size_t at = 0; at < resources.size(); at += room)
    encoder->AddSegment(kResources, std::string(kResourcesStart) + resources.substr(at, room));
  encoder->AddProfile(metadata.icc);
  for (const std::string& comment : metadata.comments)
    encoder->AddSegment(JPEG_COM, std::string_view(comment).substr(0, kLongestSegment));
}

}  // namespace

void EncodeJpeg(const JpegPicture& picture, const JpegSettings& settings, const Metadata& metadata,
                const ByteSink& write) {
  const auto encoder = std::make_unique<Encoder>(write);
  encoder->Start(picture, settings, metadata.resolution);
  AddMetadata(metadata, encoder.get());
  std::vector<uint8_t> row(static_cast<size_t>(picture.width) *
                           static_cast<size_t>(picture.channels));
  for (int y = 0; y < picture.height; ++y) {
    picture.read(y, row.data());
    encoder->AddRow(row.data());
  }
  encoder->Finish();
}

}  // namespace runner
