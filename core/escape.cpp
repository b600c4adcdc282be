#include <devfacts/core.h>

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

namespace {

constexpr size_t max_length = 6;

// Each in the slot that slot_of() finds for its byte.
constexpr char entities[][max_length + 2] = {"", "&gt;", "&quot;", "&lt;", "", "", "&apos;", "&amp;"};

constexpr size_t slot_of(uint8_t byte) { return (byte ^ byte >> 2) % 8; }

// How many bytes replace each byte in XML.
struct length_table {
  uint8_t of[256];
};

constexpr length_table make_lengths() {
  length_table lengths{};
  for (uint8_t &length : lengths.of) length = 1;
  for (const char byte : {'\'', '"', '&', '<', '>'}) {
    const auto index = static_cast<uint8_t>(byte);
    lengths.of[index] = static_cast<uint8_t>(std::string_view(entities[slot_of(index)]).size());
  }
  return lengths;
}

constexpr length_table lengths = make_lengths();

// A character is no index: it may be signed.
constexpr uint8_t length_of(char byte) { return lengths.of[static_cast<uint8_t>(byte)]; }
static_assert(length_of('\'') == 6 && length_of('"') == 6 && length_of('&') == 5 && length_of('<') == 4 &&
              length_of('>') == 4 && length_of('#') == 1);

// The bytes that the escaped text needs with its NUL, and the end of the text; 0 if no allocation can be that large.
size_t escaped_size(const char *&src) {
  size_t size = 1;
  const auto *byte = reinterpret_cast<const uint8_t *>(src);
  for (; *byte != 0; ++byte) {
    size += lengths.of[*byte];
    if (size > PTRDIFF_MAX) return 0;
  }
  src = reinterpret_cast<const char *>(byte);
  return size;
}

// Eight bytes at any address, in as many registers as they take.
using word = size_t;
struct [[gnu::packed, gnu::may_alias]] block {
  word words[8 / sizeof(word)];
};

constexpr word each(uint8_t byte) { return ~word{0} / UINT8_MAX * byte; }

// The upper bit of each byte that is 0, and perhaps of others if there is one.
constexpr word zero_bytes(word bytes) { return (bytes - each(1)) & ~bytes; }

// Those that may need an entity; "#" is taken for one, too.
constexpr word special_bytes(word bytes) {
  const word quote_or_ampersand = (bytes | each('"' ^ '\'')) ^ each('\'');
  const word angle = (bytes | each('<' ^ '>')) ^ each('>');
  return zero_bytes(quote_or_ampersand) | zero_bytes(angle);
}

template <size_t... Index>
constexpr bool is_plain(const block &bytes, std::index_sequence<Index...> /*unused*/) {
  return ((special_bytes(bytes.words[Index]) | ...) & each(0x80)) == 0;
}

struct [[gnu::packed, gnu::may_alias]] half_block {
  uint32_t bytes;
};

template <class Record>
void copy(char *to, const char *from) {
  *reinterpret_cast<Record *>(to) = *reinterpret_cast<const Record *>(from);
}

const char *entity_of(char byte) { return entities[slot_of(static_cast<uint8_t>(byte))]; }

// Each of these bytes is followed by so many that a store of eight bytes stays within what they need.
char *escape_block(char *to, const char *from) {
  for (const char *end = from + sizeof(block); from != end; ++from) {
    const size_t length = length_of(*from);
    if (length == 1) [[likely]] {
      *to++ = *from;
    } else {
      copy<block>(to, entity_of(*from));
      to += length;
    }
  }
  return to;
}

char *escape_rest(char *to, const char *from) {
  for (; *from != '\0'; ++from) {
    const size_t length = length_of(*from);
    if (length == 1) [[likely]] {
      *to++ = *from;
    } else {  // its first four bytes and its last four, which overlap
      const char *text = entity_of(*from);
      copy<half_block>(to, text);
      to += length;
      copy<half_block>(to - 4, text + length - 4);
    }
  }
  return to;
}

char *escape(char *to, const char *from, const char *end) {
  constexpr size_t followers = 3;  // an entity has four bytes or more, and the text ends with a NUL
  for (; static_cast<size_t>(end - from) >= sizeof(block) + followers; from += sizeof(block)) {
    const block bytes = *reinterpret_cast<const block *>(from);
    if (is_plain(bytes, std::make_index_sequence<8 / sizeof(word)>())) {
      *reinterpret_cast<block *>(to) = bytes;
      to += sizeof(block);
    } else {
      to = escape_block(to, from);
    }
  }
  return escape_rest(to, from);
}

}  // namespace

char *escape_xml(const char *src, char *dst) {
  const char *end = src;
  if (dst == nullptr) {
    const size_t size = escaped_size(end);
    if (size != 0) dst = static_cast<char *>(std::malloc(size));
    if (dst == nullptr) return nullptr;
    if (size == static_cast<size_t>(end - src) + 1) return static_cast<char *>(std::memcpy(dst, src, size));
  } else {
    end += std::strlen(src);
  }
  *escape(dst, src, end) = '\0';
  return dst;
}
