// Base64 between bytes and 16-bit text: the alphabet of RFC 4648 section 4 with "=" padding and no
// line breaks.
//
// Stateless; safe from any thread. Results are the same on every machine: with vector instructions
// or without, see base64_kernels.h.
#pragma once

#include "tvutil2/frame/buffer.h"
#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"

class TVUTIL_API CBase64 {
  public:
    /// Four characters for each three bytes begun. Data of more than 1.6 GB, whose text CString
    /// can't count, throws std::bad_alloc.
    static void Encode(const unsigned char* data, unsigned int len, CString& out);
    static void Encode(const CBuffer& data, CString& out);

    /// Reads zero-terminated text into `out`, which is wiped first. White space is passed over
    /// anywhere.
    ///
    /// 1 for text that is whole. 0 for a character outside the alphabet, a missing or surplus "="
    /// and anything but white space behind the padding. -1 when all that is wrong is that the bits
    /// of the last character that belong to no byte aren't zero. `out` then holds the whole groups
    /// before the fault. Text of more than 4 GB of bytes throws std::bad_alloc.
    static int Decode(const char16_t* text, CBuffer& out);
};
