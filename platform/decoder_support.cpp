// Table lookup of the generated enumeration decoders.
#include <qel/platform/decoder_support.h>
#include <qel/platform/streams.h>

#include <algorithm>

namespace platform_detail {

void decode(utility::PutStream &out, unsigned value, const DecoderEntry *table,
            int count, const char *fallback) {
  const DecoderEntry *end = table + count;
  const DecoderEntry *hit = std::lower_bound(
      table, end, value,
      [](const DecoderEntry &e, unsigned v) { return e.value < v; });
  if (hit != end && hit->value == value)
    out.PutS(hit->text);
  else if (fallback)
    out.PutF(fallback, value);
  else
    out.PutS("Unknown");
}

} // namespace platform_detail
