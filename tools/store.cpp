#include "store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <span>

#include "text.h"

namespace devfacts::tool {
namespace {

constexpr char partition[] = "Factory";
constexpr char store_folder[] = "/var/cfg";
constexpr char store_file[] = "/var/cfg/.eeprom";

// What a search for images considers.
constexpr uint32_t min_image = 17;
constexpr uint32_t max_image = 65535;

// Ten seconds in all.
constexpr unsigned lock_tries = 100;
constexpr useconds_t lock_wait = 100000;

struct record_header {
  big_endian<uint16_t> length;
  big_endian<uint16_t> id;
};

// Walks over the table have no context of their own.
uint32_t walked_size;
FILE *walked_copy;

int add_size(const eeprom_record *record) {
  walked_size += padded_size(record->length);
  return 0;
}

int copy_record(const eeprom_record *record) {
  return static_cast<int>(std::fwrite(record, record->length, 1, walked_copy));
}

// As the library does it: the records before a damage are taken.
bool load_records(std::span<const char> image) {
  while (image.size() >= sizeof(record_header)) {
    record_header header;
    std::memcpy(&header, image.data(), sizeof header);
    const uint32_t length = header.length.value();
    if (length < sizeof header || length > image.size()) return false;
    const char *payload = image.data() + sizeof header;
    if (eeprom_update(header.id.value(), payload, length - uint32_t{sizeof header}) != 0) return false;
    if (padded_size(length) > image.size()) return false;
    image = image.subspan(padded_size(length));
  }
  return image.empty();
}

bool load_image_at(int fd, off_t offset, const image_header &header) {
  const uint32_t length = header.total_length.value();
  if (header.must_be_zero.value() != 0) return false;
  const malloc_ptr<char> image{static_cast<char *>(std::malloc(length))};
  if (!image || pread(fd, image.get(), length, offset) != static_cast<ssize_t>(length)) return false;
  return load_records({image.get() + sizeof header, image.get() + length});
}

// Calls back with the offset of each image that a search considers, whole or not, until one is wanted.
template <class Visitor>
bool find_image(int fd, Visitor is_wanted) {
  image_header header;
  for (off_t offset = 0; pread(fd, &header, sizeof header, offset) == sizeof header; offset += sizeof header) {
    const uint32_t length = header.total_length.value();
    const bool is_candidate = header.magic == image_magic && length >= min_image && length <= max_image;
    if (is_candidate && is_wanted(offset, header)) return true;
  }
  return false;
}

bool is_flash_refused() {
  if (errno != EACCES && errno != EPERM) return false;
  const int error = errno;
  const unique_file list{std::fopen("/proc/mtd", "re")};
  char line[256];
  bool is_listed = false;
  while (list && !is_listed && std::fgets(line, sizeof line, list.get()) != nullptr) {
    is_listed = std::strstr(line, "\"Factory\"") != nullptr;
  }
  errno = error;
  return is_listed;
}

}  // namespace

uint32_t image_size() {
  walked_size = sizeof(image_header);
  eeprom_for_each(add_size);
  return walked_size;
}

malloc_ptr<char> copy_table(size_t &size) {
  char *bytes = nullptr;
  walked_copy = open_memstream(&bytes, &size);
  if (walked_copy == nullptr) return {};
  eeprom_for_each(copy_record);
  const bool is_whole = std::ferror(walked_copy) == 0;
  malloc_ptr<char> held{std::fclose(walked_copy) == 0 ? bytes : nullptr};
  return is_whole ? std::move(held) : malloc_ptr<char>{};
}

bool load_image(int fd) {
  eeprom_free();
  return find_image(fd, [fd](off_t offset, const image_header &header) { return load_image_at(fd, offset, header); });
}

store_session::store_session(purpose wanted)
    : name_("the flash partition Factory"), is_writable_(wanted != purpose::looking) {
  errno = 0;
  fd_.reset(mtd_block_find(partition));
  if (!fd_ && is_flash_refused()) {
    refuse("open", wanted);
  } else {
    is_open_ = (fd_ || open_file(wanted)) && lock(wanted);
  }
}

void store_session::refuse(const char *what, purpose wanted) const {
  if (wanted != purpose::looking) print_error("cannot %s %s: %s", what, name_, std::strerror(errno));
}

// The library makes the file when it is not there yet.
bool store_session::open_file(purpose wanted) {
  name_ = store_file;
  fd_.reset(open(store_file, (is_writable_ ? O_RDWR : O_RDONLY) | O_CLOEXEC));
  if (fd_) return true;
  const bool is_missing = errno == ENOENT && faccessat(AT_FDCWD, store_file, F_OK, AT_SYMLINK_NOFOLLOW) != 0;
  if (is_missing && is_writable_ && access(store_folder, W_OK) == 0) return true;
  if (!is_missing && wanted == purpose::reading) {
    is_writable_ = false;
    fd_.reset(open(store_file, O_RDONLY | O_CLOEXEC));
  }
  if (!fd_) refuse("open", wanted);
  return static_cast<bool>(fd_);
}

// Locks the flash partition's device, or the folder of the file, since that may not be there yet.
bool store_session::lock(purpose wanted) {
  if (name_ == store_file) lock_.reset(open(store_folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const int fd = name_ == store_file ? lock_.get() : fd_.get();
  const int kind = wanted == purpose::changing ? LOCK_EX : LOCK_SH;
  int result = flock(fd, kind | LOCK_NB);
  for (unsigned i = 0; i < lock_tries && result != 0 && errno == EWOULDBLOCK; ++i) {
    usleep(lock_wait);
    result = flock(fd, kind | LOCK_NB);
  }
  if (result == 0 || (wanted != purpose::changing && errno != EWOULDBLOCK)) return true;
  refuse("lock", wanted);
  return false;
}

bool store_session::load() const {
  if (!is_writable_) return load_image(fd_.get());
  eeprom_free();
  return eeprom_init() == 0;
}

bool store_session::is_same(int fd) const {
  struct stat one;
  struct stat other;
  if (fstat(fd, &one) != 0 || fstat(fd_.get(), &other) != 0) return false;
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool store_session::erase() const {
  const auto erase_one = [this](off_t offset, const image_header &) {
    return pwrite(fd_.get(), "\0\0\0", sizeof image_magic, offset) != sizeof image_magic;
  };
  return !find_image(fd_.get(), erase_one) && fsync(fd_.get()) == 0 && !load() && is_empty();
}

}  // namespace devfacts::tool
