#include "modules/common/jpeg_reader.h"

#include <jerror.h>

#include <cstdlib>

#include "glib/module_api/result_values.h"

namespace modules {
namespace {

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kProfileMarker = JPEG_APP0 + 2;
constexpr int kEndMarker = 0xD9;
// Real progressive files have some ten scans. Thousands of empty ones over a large picture would run for hours.
constexpr int kMaxScans = 500;
// Coefficients of a progressive picture, which are in memory together with its page: of some 150 million pixels.
constexpr long kMaxDecoderBytes = 448L << 20;

// Ink on white paper: what each ink lets through. `ink` counts 255 for no ink.
void InkToColour(const std::uint8_t* ink, std::uint8_t* row, std::uint32_t width, bool inverted) {
  const std::uint32_t flip = inverted ? 0 : 255;
  for (std::uint32_t x = 0; x < width; ++x, ink += 4, row += 3) {
    const std::uint32_t black = ink[3] ^ flip;
    for (int i = 0; i < 3; ++i) row[i] = static_cast<std::uint8_t>(((ink[2 - i] ^ flip) * black + 127) / 255);
  }
}

}  // namespace

JpegReader::JpegReader(std::span<const std::uint8_t> bytes) : cinfo_(), errors_(), source_(), progress_() {
  cinfo_.err = jpeg_std_error(&errors_.base);
  errors_.base.error_exit = Leave;
  errors_.base.emit_message = Note;
  errors_.base.output_message = [](j_common_ptr) {};
  source_.base.next_input_byte = bytes.data();
  source_.base.bytes_in_buffer = bytes.size();
  source_.base.init_source = [](j_decompress_ptr) {};
  source_.base.fill_input_buffer = EndInput;
  source_.base.skip_input_data = SkipInput;
  source_.base.resync_to_restart = jpeg_resync_to_restart;
  source_.base.term_source = [](j_decompress_ptr) {};
  progress_.progress_monitor = LimitScans;
}

JpegReader::~JpegReader() {
  if (created_) jpeg_destroy_decompress(&cinfo_);
  std::free(profile_);
}

void JpegReader::Leave(j_common_ptr cinfo) {
  auto* errors = reinterpret_cast<Errors*>(cinfo->err);
  errors->base.format_message(cinfo, errors->text);
  std::longjmp(errors->jump, 1);
}

void JpegReader::Note(j_common_ptr cinfo, int level) {
  if (level >= 0) return;
  auto* errors = reinterpret_cast<Errors*>(cinfo->err);
  ++errors->base.num_warnings;
  const auto* decoder = reinterpret_cast<j_decompress_ptr>(cinfo);
  if (errors->base.msg_code == JWRN_HIT_MARKER && decoder->unread_marker == kEndMarker &&
      decoder->input_scan_number <= 1 && decoder->input_iMCU_row == 0) {
    errors->withoutRows = true;
  }
}

boolean JpegReader::EndInput(j_decompress_ptr cinfo) {
  static constexpr JOCTET kEnd[] = {0xFF, kEndMarker};
  auto* source = reinterpret_cast<MemorySource*>(cinfo->src);
  source->endsEarly = true;
  source->base.next_input_byte = kEnd;
  source->base.bytes_in_buffer = sizeof(kEnd);
  cinfo->err->msg_code = JWRN_JPEG_EOF;
  Note(reinterpret_cast<j_common_ptr>(cinfo), -1);
  return TRUE;
}

void JpegReader::SkipInput(j_decompress_ptr cinfo, long count) {
  if (count <= 0) return;
  jpeg_source_mgr& source = *cinfo->src;
  if (static_cast<std::size_t>(count) > source.bytes_in_buffer) {
    EndInput(cinfo);
    return;
  }
  source.next_input_byte += count;
  source.bytes_in_buffer -= static_cast<std::size_t>(count);
}

void JpegReader::LimitScans(j_common_ptr cinfo) {
  if (reinterpret_cast<j_decompress_ptr>(cinfo)->input_scan_number <= kMaxScans) return;
  cinfo->err->msg_code = JERR_BAD_PROGRESSION;
  Leave(cinfo);
}

bool JpegReader::ReadHeader() {
  if (setjmp(errors_.jump) != 0) return false;
  jpeg_create_decompress(&cinfo_);
  created_ = true;
  cinfo_.src = &source_.base;
  cinfo_.progress = &progress_;
  cinfo_.mem->max_memory_to_use = kMaxDecoderBytes;
  jpeg_save_markers(&cinfo_, kExifMarker, 0xFFFF);
  jpeg_save_markers(&cinfo_, kProfileMarker, 0xFFFF);
  jpeg_read_header(&cinfo_, TRUE);
  ReadNotes();
  ReadProfile();
  ChooseOutput();
  return true;
}

void JpegReader::ReadNotes() {
  for (const jpeg_marker_struct* marker = cinfo_.marker_list; marker != nullptr; marker = marker->next) {
    if (marker->marker != kExifMarker || marker->data_length < 6 || marker->data[0] != 'E') continue;
    exif_ = ReadExif({marker->data, marker->data_length});
    return;
  }
}

// A broken profile is no damage of the picture.
void JpegReader::ReadProfile() {
  const long warnings = errors_.base.num_warnings;
  jpeg_read_icc_profile(&cinfo_, &profile_, &profileSize_);
  errors_.base.num_warnings = warnings;
}

void JpegReader::ChooseOutput() {
  switch (cinfo_.jpeg_color_space) {
    case JCS_GRAYSCALE:
      cinfo_.out_color_space = JCS_GRAYSCALE;
      break;
    case JCS_CMYK:
    case JCS_YCCK:
      cinfo_.out_color_space = JCS_CMYK;
      break;
    case JCS_RGB:
    case JCS_YCbCr:
      cinfo_.out_color_space = JCS_EXT_BGR;
      break;
    default:
      cinfo_.err->msg_code = JERR_CONVERSION_NOTIMPL;
      Leave(reinterpret_cast<j_common_ptr>(&cinfo_));
  }
  jpeg_calc_output_dimensions(&cinfo_);
}

void JpegReader::ReduceTo(std::uint32_t width, std::uint32_t height) {
  if (width == 0 && height == 0) return;
  if (setjmp(errors_.jump) != 0) return;
  cinfo_.scale_denom = 8;
  for (cinfo_.scale_num = 1; cinfo_.scale_num < 8; ++cinfo_.scale_num) {
    jpeg_calc_output_dimensions(&cinfo_);
    if (cinfo_.output_width >= width && cinfo_.output_height >= height) return;
  }
  jpeg_calc_output_dimensions(&cinfo_);
}

double JpegReader::DpiX() const {
  if (cinfo_.saw_JFIF_marker && cinfo_.density_unit != 0) {
    return cinfo_.density_unit == 2 ? cinfo_.X_density * 2.54 : cinfo_.X_density;
  }
  return exif_.dpiX;
}

double JpegReader::DpiY() const {
  if (cinfo_.saw_JFIF_marker && cinfo_.density_unit != 0) {
    return cinfo_.density_unit == 2 ? cinfo_.Y_density * 2.54 : cinfo_.Y_density;
  }
  return exif_.dpiY;
}

void JpegReader::FillGreys(Page& page) const {
  SetGrayRamp(page, 256);
  ConvertPage(Profile(), Samples::kGrey, page);
}

bool JpegReader::Start() {
  if (Bits() == 24) {
    const bool inks = cinfo_.out_color_space == JCS_CMYK;
    if (inks) inkRow_ = std::make_unique<std::uint8_t[]>(std::size_t{Width()} * 4);
    const Samples samples = !inks                          ? Samples::kColours
                            : cinfo_.saw_Adobe_marker != 0 ? Samples::kInvertedInks
                                                           : Samples::kInks;
    conversion_ = ConversionToSrgb(Profile(), {samples}, std::uint64_t{Width()} * Height());
  }
  if (setjmp(errors_.jump) != 0) return false;
  jpeg_start_decompress(&cinfo_);
  return true;
}

bool JpegReader::ReadRow(std::uint8_t* row) {
  std::uint8_t* decoded = inkRow_ != nullptr ? inkRow_.get() : row;
  if (!DecodeRow(decoded)) return false;
  if (conversion_ != nullptr) {
    conversion_->Convert(decoded, row, Width());
  } else if (inkRow_ != nullptr) {
    InkToColour(decoded, row, Width(), cinfo_.saw_Adobe_marker != 0);
  }
  return true;
}

bool JpegReader::DecodeRow(std::uint8_t* row) {
  if (setjmp(errors_.jump) != 0) return false;
  return jpeg_read_scanlines(&cinfo_, &row, 1) == 1;
}

std::uint32_t JpegReader::Result() const {
  switch (errors_.base.msg_code) {
    case JERR_ARITH_NOTIMPL:
    case JERR_BAD_PRECISION:
    case JERR_CCIR601_NOTIMPL:
    case JERR_COMPONENT_COUNT:
    case JERR_CONVERSION_NOTIMPL:
    case JERR_FRACT_SAMPLE_NOTIMPL:
    case JERR_IMAGE_TOO_BIG:
    case JERR_NO_BACKING_STORE:
    case JERR_NOT_COMPILED:
    case JERR_SOF_UNSUPPORTED:
    case JERR_WIDTH_OVERFLOW:
      return glib::NSUP;
    default:
      return glib::IERR;
  }
}

}  // namespace modules
