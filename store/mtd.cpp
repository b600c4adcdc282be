// Flash partitions, by name.
#include <devfacts/store.h>
#include <fcntl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/owner.h"
#include "core/text.h"

using namespace devfacts;

namespace {

constexpr size_t list_size = 2048;

// The kernel's list of partitions as a text: what one read returns of it.
bool read_list(char (&text)[list_size]) {
  const unique_fd file{open("/proc/mtd", O_RDONLY | O_CLOEXEC)};
  if (!file) return false;
  const ssize_t count = read(file.get(), text, sizeof text - 1);
  if (count <= 0) return false;
  text[count] = '\0';
  return true;
}

struct list_line {
  const char *device;
  const char *name;
};

// Splits a line 'mtd0: 00010000 00010000 "name"' in place. The name loses its first and last character, one of which
// is a quote.
bool split(char *line, list_line &fields) {
  fields.device = strsep(&line, " ");
  for (int skipped = 0; skipped < 2; ++skipped) strsep(&line, " ");  // size and erase size
  if (line == nullptr || !starts_with(fields.device, "mtd")) return false;
  const size_t length = std::strlen(line);
  if (length == 0 || (line[0] != '"' && line[length - 1] != '"')) return false;
  line[length - 1] = '\0';
  fields.name = length > 1 ? line + 1 : line;
  return true;
}

int open_block_device(const char *device) {
  char path[2048];
  std::snprintf(path, sizeof path, "/dev/mtdblock%d", static_cast<int>(std::strtol(device + 3, nullptr, 0)));
  return open(path, O_RDWR);
}

}  // namespace

int mtd_block_find(const char *name) {
  char text[list_size];
  if (!read_list(text)) return -1;
  char *lines = text;
  strsep(&lines, "\n");  // the heading
  while (char *line = strsep(&lines, "\n")) {
    list_line fields;
    if (*line == '\0') continue;
    if (!split(line, fields)) return -1;
    if (std::strcmp(fields.name, name) == 0) return open_block_device(fields.device);
  }
  return -1;
}
