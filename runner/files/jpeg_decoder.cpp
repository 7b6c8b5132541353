#include "runner/files/jpeg_decoder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <utility>

// The library's header wants <cstdio> before it.
#include <jpeglib.h>

#include "runner/failure.h"
#include "runner/names.h"

namespace runner {
namespace {

// A progressive picture is decoded as a whole for each of its scans. Encoders make about ten.
constexpr int kMostScans = 100;

}  // namespace

// The library reports a fault that it can't go on from by a jump. The functions that it jumps back
// to have no objects that would have to be destroyed.
struct JpegDecoder::State {
  jpeg_decompress_struct decoder{};
  jpeg_error_mgr errors{};
  jpeg_progress_mgr progress{};
  std::jmp_buf back{};
  std::array<char, JMSG_LENGTH_MAX> message{};
  bool faulty = false;
  bool started = false;
  std::string problem;
  std::FILE* file = nullptr;

  static State& Of(j_common_ptr common) { return *static_cast<State*>(common->client_data); }

  static void NoteFault(j_common_ptr common) {
    State& state = Of(common);
    if (std::exchange(state.faulty, true)) return;
    common->err->format_message(common, state.message.data());
  }
  [[noreturn]] static void Stop(j_common_ptr common) {
    NoteFault(common);
    std::longjmp(Of(common).back, 1);
  }
  static void Message(j_common_ptr common, int level) {
    if (level >= 0) return;  // news, not faults
    NoteFault(common);
    ++common->err->num_warnings;
  }
  static void CountScans(j_common_ptr common) {
    if (reinterpret_cast<j_decompress_ptr>(common)->input_scan_number <= kMostScans) return;
    State& state = Of(common);
    state.faulty = true;
    std::strcpy(state.message.data(), "more scans than a picture has");
    std::longjmp(state.back, 1);
  }

  bool ReadHeader(const unsigned char* bytes, unsigned long size) {
    if (setjmp(back) != 0) return false;
    jpeg_create_decompress(&decoder);
    if (file != nullptr)
      jpeg_stdio_src(&decoder, file);
    else
      jpeg_mem_src(&decoder, bytes, size);
    return jpeg_read_header(&decoder, TRUE) == JPEG_HEADER_OK;
  }

  bool ReadRow(uint8_t* row) {
    if (setjmp(back) != 0) return false;
    if (!started) {
      decoder.out_color_space = decoder.num_components == 1 ? JCS_GRAYSCALE : JCS_RGB;
      decoder.progress = &progress;
      started = true;
      jpeg_start_decompress(&decoder);
    }
    JSAMPROW rows[1] = {row};
    return jpeg_read_scanlines(&decoder, rows, 1) == 1;
  }

  const std::string& Problem() {
    if (problem.empty() && faulty) problem = message.data();
    return problem;
  }
};

JpegDecoder::JpegDecoder(const FileContent& content) : state(std::make_unique<State>()) {
  State& own = *state;
  own.decoder.err = jpeg_std_error(&own.errors);
  own.errors.error_exit = State::Stop;
  own.errors.emit_message = State::Message;
  own.decoder.client_data = state.get();
  own.progress.progress_monitor = State::CountScans;
  if (!content.IsInMemory()) {
    own.file = std::fopen(content.Path().c_str(), "rbe");
    if (own.file == nullptr)
      throw Failure("can't open " + Quoted(content.Path().native()) + ": " + std::strerror(errno));
  }
  const auto* bytes = reinterpret_cast<const unsigned char*>(content.Bytes().data());
  if (own.ReadHeader(bytes, content.Bytes().size())) return;
  const std::string problem = own.Problem();
  jpeg_destroy_decompress(&own.decoder);
  if (own.file != nullptr) std::fclose(own.file);
  throw Failure(problem);
}

JpegDecoder::~JpegDecoder() {
  jpeg_destroy_decompress(&state->decoder);
  if (state->file != nullptr) std::fclose(state->file);
}

int JpegDecoder::Width() const { return static_cast<int>(state->decoder.image_width); }
int JpegDecoder::Height() const { return static_cast<int>(state->decoder.image_height); }
int JpegDecoder::Channels() const { return state->decoder.num_components; }
bool JpegDecoder::IsProgressive() const {
  return jpeg_has_multiple_scans(&state->decoder) != FALSE;
}
bool JpegDecoder::HasFullColour() const { return state->decoder.max_h_samp_factor <= 1; }

std::optional<JpegCoding> JpegDecoder::Coding() const {
  const jpeg_decompress_struct& decoder = state->decoder;
  if (decoder.jpeg_color_space != JCS_YCbCr && decoder.jpeg_color_space != JCS_GRAYSCALE)
    return std::nullopt;
  JpegCoding coding;
  int blocks = 0;
  for (int i = 0; i < decoder.num_components; ++i) {
    const jpeg_component_info& info = decoder.comp_info[i];
    const JQUANT_TBL* table = decoder.quant_tbl_ptrs[info.quant_tbl_no];
    if (table == nullptr) return std::nullopt;
    std::copy_n(table->quantval, DCTSIZE2, coding.tables[info.quant_tbl_no].begin());
    coding.channels.push_back({info.quant_tbl_no, info.h_samp_factor, info.v_samp_factor});
    blocks += info.h_samp_factor * info.v_samp_factor;
  }
  // More of them can't be written together.
  if (blocks > D_MAX_BLOCKS_IN_MCU) return std::nullopt;
  return coding;
}

bool JpegDecoder::ReadRow(uint8_t* row) { return state->ReadRow(row); }
const std::string& JpegDecoder::Problem() const { return state->Problem(); }

}  // namespace runner
