#ifndef MODULES_QWMF_WMF_TRANSLATOR_H_
#define MODULES_QWMF_WMF_TRANSLATOR_H_

#include <cstdint>
#include <span>

#include "platform/metafile/recorder.h"

namespace qwmf {

// Writes the records of a metafile of 16-bit coordinates into the recorder, whose mapping stands already.
// `windowOrg` is the one that it was given. Records that make no sense are passed over.
void TranslateRecords(std::span<const std::uint8_t> records, platform::Point windowOrg,
                      platform::MetafileRecorder& recorder);

}  // namespace qwmf

#endif  // MODULES_QWMF_WMF_TRANSLATOR_H_
