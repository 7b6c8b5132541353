#include "runner/work/hash128.h"

#include <glib.h>

#include <array>
#include <memory>

namespace runner {

Hash128 HashOf(std::string_view bytes) {
  const std::unique_ptr<GChecksum, void (*)(GChecksum*)> sum(g_checksum_new(G_CHECKSUM_SHA256),
                                                             g_checksum_free);
  g_checksum_update(sum.get(), reinterpret_cast<const guchar*>(bytes.data()),
                    static_cast<gssize>(bytes.size()));
  std::array<guint8, 32> digest{};
  gsize size = digest.size();
  g_checksum_get_digest(sum.get(), digest.data(), &size);
  Hash128 hash;
  for (size_t i = 0; i < 8; ++i) {
    hash.high = hash.high << 8 | digest[i];
    hash.low = hash.low << 8 | digest[i + 8];
  }
  return hash;
}

std::string Hexadecimal(const Hash128& hash) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const uint64_t word : {hash.high, hash.low})
    for (int shift = 60; shift >= 0; shift -= 4) text += kDigits[word >> shift & 15];
  return text;
}

}  // namespace runner
