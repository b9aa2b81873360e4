// Internal header of the platform layer (not installed): the table lookup
// shared by the generated enumeration decoders.
#ifndef QEL_PLATFORM_DECODER_SUPPORT_H
#define QEL_PLATFORM_DECODER_SUPPORT_H

namespace utility {
class PutStream;
}

namespace platform_detail {

struct DecoderEntry {
  unsigned value;
  const char *text;
};

/// Writes the text of \p value from \p table (\p count entries, ascending
/// values); an unlisted value writes \p fallback formatted with the value
/// when there is one, else "Unknown".
void decode(utility::PutStream &out, unsigned value, const DecoderEntry *table,
            int count, const char *fallback);

} // namespace platform_detail

#endif
