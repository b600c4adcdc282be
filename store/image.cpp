#include "store/image.h"

#include <alloca.h>
#include <unistd.h>

#include <bit>
#include <span>

#include "core/big_endian.h"
#include "core/byte_reader.h"
#include "core/byte_writer.h"
#include "store/record_table.h"

using namespace devfacts;

namespace {

constexpr uint32_t max_loaded_size = 65536;

struct record_head {
  big_endian<uint16_t> length;  // head and payload, without the padding
  big_endian<uint16_t> id;
};
static_assert(sizeof(record_head) == record_head_size);

bool load_records(byte_reader image) {
  record_head head;
  while (image.read(head)) {
    const uint32_t length = head.length.value();
    std::span<const std::byte> payload;
    if (length < sizeof head || !image.take(length - sizeof head, payload)) return false;
    if (eeprom_update(head.id.value(), payload.data(), static_cast<uint32_t>(payload.size())) != 0) return false;
    if (!image.skip(padded_size(length) - length)) return false;
  }
  return image.remaining() == 0;
}

bool read_exactly(int fd, void *bytes, size_t count) { return read(fd, bytes, count) == static_cast<ssize_t>(count); }

}  // namespace

int devfacts::eeprom_load_image(int fd) {
  image_header header;
  if (!read_exactly(fd, &header, sizeof header) || header.magic != image_magic) return -1;
  const uint32_t total_length = header.total_length.value();
  if (total_length > max_loaded_size) return -1;
  if (lseek(fd, -static_cast<off_t>(sizeof header), SEEK_CUR) < 0) return -1;
  // On the stack although its size is known at run time only: every return releases it, and no allocation can fail.
  // cppcheck-suppress allocaCalled
  void *buffer = alloca(total_length);
  if (!read_exactly(fd, buffer, total_length)) return -1;
  byte_reader image(buffer, total_length);
  if (!image.read(header) || header.must_be_zero != 0U) return -1;
  return load_records(image) ? 0 : -1;
}

size_t devfacts::eeprom_image_size() {
  size_t size = sizeof(image_header);  // all ids with the longest records are below 4 GiB
  for (uint32_t id = 0; id < eeprom_table.capacity; ++id) {
    if (eeprom_table.slots[id] != nullptr) size += padded_size(eeprom_table.slots[id]->length);
  }
  return size;
}

void devfacts::write_image(std::span<std::byte> buffer) {
  byte_writer image(buffer);
  image.write(image_header{image_magic, static_cast<uint32_t>(buffer.size()), uint16_t{1}, uint16_t{0}, 0U});
  for (uint32_t id = 0; id < eeprom_table.capacity; ++id) {
    const eeprom_record *record = eeprom_table.slots[id];
    if (record == nullptr) continue;
    if constexpr (std::endian::native == std::endian::big) {
      image.write(record, padded_size(record->length));  // its head is in the stored order as it is
      continue;
    }
    image.write(record_head{record->length, record->id});
    image.write(record + 1, padded_size(record->length) - record_head_size);
  }
}
