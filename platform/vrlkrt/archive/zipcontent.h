#pragma once

#include "vrlkrt/archive/zipdirectory.h"

#include <cstddef>
#include <functional>

namespace vrlkrt {

/// Takes content block by block.
using ContentConsumer = std::function<void(const char* bytes, std::size_t count)>;

/// Unpacks one entry into `consume`, in blocks. It has to give exactly the size and the checksum that it states, out
/// of exactly its own bytes: never more than the stated size is handed on. Throws vrlBaseException that names the
/// entry, std::bad_alloc, and whatever `consume` throws.
void readZipContent(const ZipEntry& entry, const ContentConsumer& consume);

}  // namespace vrlkrt
