// The store of the records as the tool uses it: locked, read without a change, changed.
#pragma once

#include <devfacts/store.h>

#include <cstddef>
#include <cstdint>

#include "core/big_endian.h"
#include "core/owner.h"

namespace devfacts::tool {

// The start of an image; the records follow, each padded to a multiple of 4 bytes.
struct image_header {
  big_endian<uint32_t> magic;
  big_endian<uint32_t> total_length;
  big_endian<uint16_t> fixed_one;
  big_endian<uint16_t> fixed_zero;
  big_endian<uint32_t> must_be_zero;
};
static_assert(sizeof(image_header) == 16);

constexpr big_endian<uint32_t> image_magic = 0x57584545;  // "WXEE"

constexpr uint32_t padded_size(uint32_t length) { return (length + 3) & ~3U; }

// The bytes of the image that the table makes: those of the header alone if it is empty.
uint32_t image_size();
inline bool is_empty() { return image_size() == sizeof(image_header); }

// All records of the table, one after the other as they are in memory; null without memory.
malloc_ptr<char> copy_table(size_t &size);

// Looking says nothing of what is in the way, and does not make the file.
enum class purpose : uint8_t { looking, reading, changing };

// The store, for as long as this lives. Other tools wait: for one that changes it, and one that changes it for all.
class store_session {
 public:
  // Opens and locks the store, or says what is in the way.
  explicit store_session(purpose wanted);
  ~store_session() { eeprom_free(); }
  store_session(const store_session &) = delete;
  store_session &operator=(const store_session &) = delete;

  explicit operator bool() const { return is_open_; }
  const char *name() const { return name_; }

  // Fills the table anew. False if no image in the store is whole. A store that may not be written is read all the
  // same.
  bool load() const;

  // Is this descriptor one of the store?
  bool is_same(int fd) const;

  // Takes the images out of the store. False if one is still there.
  bool erase() const;

 private:
  void refuse(const char *what, purpose wanted) const;
  bool open_file(purpose wanted);
  bool lock(purpose wanted);

  const char *name_;
  unique_fd fd_;    // of the store; empty if the file is not there yet
  unique_fd lock_;  // of what is locked, if that is not the store
  bool is_writable_;
  bool is_open_ = false;
};

// Fills the table with the first whole image in a file, as eeprom_init() does from the store. False if there is no
// image.
bool load_image(int fd);

}  // namespace devfacts::tool
