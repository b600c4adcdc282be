// What the library does on the device, work by work, beside the bare loop that does the least of it: works NAME ROUNDS
// does it so many times, works alone lists the names. The instructions of two runs with different numbers of rounds
// tell what a round costs. Everything is made in the current folder and in /var/cfg; the language is that of /etc/lang.
#include <devfacts/core.h>
#include <devfacts/i18n.h>
#include <devfacts/net.h>
#include <devfacts/store.h>
#include <devfacts/transport.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

void require(bool right, const char *what) {
  if (right) return;
  std::perror(what);
  std::exit(1);
}

// What a bare loop does must not be left out for want of a reader.
template <class T>
void keep(const T &value) {
  asm volatile("" : : "r"(&value) : "memory");
}

// Escaping: a text of 1,000 bytes with a "<" at a fixed distance.
char text[1001];
char escaped[6001];

void fill_text(size_t distance) {
  for (size_t i = 0; i < sizeof text - 1; ++i) text[i] = (i + 1) % distance == 0 ? '<' : "signal and noise"[i % 16];
}

void fill_plain() { fill_text(sizeof text); }
void fill_dense() { fill_text(20); }
void fill_entities() { fill_text(1); }
void fill_short() {
  fill_plain();
  text[16] = '\0';
}

void escape_into() { escape_xml(text, escaped); }
void escape_allocated() { std::free(escape_xml(text, nullptr)); }
void copy_text() { keep(*std::strcpy(escaped, text)); }
void copy_allocated() { std::free(strdup(text)); }

// Byte by byte, by a table, into a buffer that is large enough.
void escape_by_table() {
  static const char *entities[256];
  entities[+'\''] = "&apos;";
  entities[+'"'] = "&quot;";
  entities[+'&'] = "&amp;";
  entities[+'<'] = "&lt;";
  entities[+'>'] = "&gt;";
  char *to = escaped;
  for (const char *from = text; *from != '\0'; ++from) {
    const char *entity = entities[static_cast<unsigned char>(*from)];
    if (entity == nullptr) {
      *to++ = *from;
    } else {
      to = stpcpy(to, entity);
    }
  }
  *to = '\0';
}

// Items.
void print_int() { xml_int_item("rx_packets", -1234567); }
void print_text() { xml_str_item("station", text); }
void print_escaped() { xml_str_esc_item("station", text); }
void write_item() { std::fwrite("  <station>signal and noise</station>\n", 1, 37, stdout); }
void print_item() { std::printf("  <%s>%d</%s>\n", "rx_packets", -1234567, "rx_packets"); }

// The report of one interface with one address.
char document[1200];
size_t document_size = 0;

void add_interface() {
  constexpr uint8_t address[] = {192, 168, 1, 20, 0}, hardware[] = {0, 0x15, 0x6D, 0xA4, 0x30, 0xF2};
  ifi_entry *entry = ifi_alloc();
  entry->name = strdup("ath0");
  entry->flags = 1;
  std::memcpy(entry->hwaddr, hardware, sizeof hardware);
  entry->stats = static_cast<rtnl_link_stats *>(std::calloc(23, sizeof(uint32_t)));
  auto *counters = reinterpret_cast<uint32_t *>(entry->stats);
  for (uint32_t i = 0; i < 23; ++i) counters[i] = i < 4 ? 123456789 * (i + 1) : i;
  ipi_entry *own = ipi_alloc();
  own->family = AF_INET;
  own->addr = static_cast<uint8_t *>(std::malloc(sizeof address));
  std::memcpy(own->addr, address, sizeof address);
  ifi_add_addr(entry, own);
  ifi_register(entry);
}

void report() { ifi_dump_all(nullptr); }

void keep_document() {
  add_interface();
  FILE *copy = std::tmpfile();
  const int terminal = dup(STDOUT_FILENO);
  dup2(fileno(copy), STDOUT_FILENO);
  report();
  std::fflush(stdout);
  document_size = static_cast<size_t>(pread(fileno(copy), document, sizeof document, 0));
  dup2(terminal, STDOUT_FILENO);
}

void write_document() { std::fwrite(document, 1, document_size, stdout); }

// Lines of 24 bytes.
constexpr char lines_path[] = "lines.txt";
constexpr int line_count = 200;

void write_lines() {
  FILE *file = std::fopen(lines_path, "w");
  require(file != nullptr, lines_path);
  for (int i = 1; i <= line_count; ++i) std::fprintf(file, "Counter %03d: %10d\n", i, i * 7919);
  std::fclose(file);
}

int count_line(void *count, char * /*key*/, char * /*value*/) {
  ++*static_cast<int *>(count);
  return 0;
}

void walk_lines() {
  int count = 0;
  iterate(lines_path, nullptr, count_line, &count);
  require(count == line_count, "lines");
}

void find_line() {
  first_match_u32 match{};
  iterate(lines_path, "Counter 200", __return_first_match_in_u32, &match);
  require(match.found != 0 && match.value == 200 * 7919, "match");
}

template <int Size>
void read_lines(const char *path, int count) {
  char line[Size];
  FILE *file = std::fopen(path, "r");
  for (; count > 0 && std::fgets(line, sizeof line, file) != nullptr; --count) keep(line);
  std::fclose(file);
}

void read_by_fgets() { read_lines<1024>(lines_path, line_count); }

// Addresses.
void parse_address() {
  uint8_t address[6];
  require(parse_macaddr(address, "00:15:6d:A4:30:f2") == 0, "address");
}

void scan_address() {
  unsigned address[6];
  require(std::sscanf("00:15:6d:A4:30:f2", "%x:%x:%x:%x:%x:%x", address, address + 1, address + 2, address + 3,
                      address + 4, address + 5) == 6,
          "address");
}

// A catalogue of 500 entries.
constexpr int entry_count = 500;
constexpr int lines_each = 4;

void write_catalogue() {
  mkdir("de", 0700);
  FILE *file = std::fopen("de/texts.po", "w");
  require(file != nullptr, "de/texts.po");
  for (int i = 1; i <= entry_count; ++i) {
    std::fprintf(file, "#: status.c:%d\nmsgid \"Signal of station %d\"\nmsgstr \"Empfang von Station %d\"\n\n", i, i,
                 i);
  }
  std::fclose(file);
  require(set_po_access_path("texts", ".") == 0, "/etc/lang");
}

void translate() { require(std::strcmp(gettext("Signal of station 500"), "Empfang von Station 500") == 0, "text"); }
void read_catalogue() { read_lines<4096>("de/texts.po", (entry_count - 1) * lines_each + 3); }

// 35 records of 24 bytes.
constexpr int record_count = 35;

void update_records() {
  constexpr char payload[24] = "payload";
  for (int id = 0; id < record_count; ++id) eeprom_update(id, payload, sizeof payload);
}

void write_store() {
  mkdir("/var/cfg", 0755);
  eeprom_init();
  update_records();
  eeprom_write();
  eeprom_free();
  require(eeprom_init() == 0, "/var/cfg/.eeprom");
}

void load_records() {
  eeprom_free();
  require(eeprom_init() == 0, "/var/cfg/.eeprom");
}

void read_store() {
  static char store[65536];
  const int fd = open("/var/cfg/.eeprom", O_RDONLY);
  require(read(fd, store, sizeof store) == sizeof store, "/var/cfg/.eeprom");
  close(fd);
}

// Messages of 100 bytes, of this process to itself.
constexpr char socket_path[] = "messages.socket";
constexpr uint32_t message_size = 100;
char message[message_size + 4];
int receiver = -1;
int sender = -1;

void open_ends() {
  receiver = socket_input_init(socket_path);
  const sockaddr_un address{AF_UNIX, "messages.socket"};
  sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0);
  require(connect(sender, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0, socket_path);
}

int take_message(const void *bytes, uint32_t /*length*/) {
  keep(bytes);
  return 0;
}

void send_message() {
  require(socket_write(message, message_size, socket_path) == 0, socket_path);
  fd_set set;
  FD_ZERO(&set);
  FD_SET(receiver, &set);
  socket_read(receiver, &set, take_message);
}

void send_bare() {
  char buffer[1600];
  require(send(sender, message, sizeof message, MSG_NOSIGNAL) == sizeof message, socket_path);
  while (recv(receiver, buffer, sizeof buffer, MSG_DONTWAIT) > 0) keep(buffer);
}

// What a record costs at least: a block of its size given back, another one taken and filled.
void fill_blocks() {
  static void *blocks[record_count];
  constexpr char payload[24] = "payload";
  for (void *&block : blocks) {
    std::free(block);
    block = std::malloc(sizeof payload + 5);
    std::memcpy(block, payload, sizeof payload);
  }
}

void write_mapped() {
  static char image[16 + record_count * 28];
  const int fd = open("/var/cfg/.eeprom", O_RDWR);
  void *mapping = mmap(nullptr, sizeof image, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 4096);
  close(fd);
  std::memcpy(mapping, image, sizeof image);
  msync(mapping, sizeof image, MS_SYNC);
  munmap(mapping, sizeof image);
}

void load_bare() {
  read_store();
  fill_blocks();
}

struct work {
  const char *name;  // what is done, and who does it
  void (*prepare)();
  void (*round)();
};

constexpr work works[] = {
    {"escape_plain devfacts", fill_plain, escape_into},
    {"escape_plain table", fill_plain, escape_by_table},
    {"escape_plain copy", fill_plain, copy_text},
    {"escape_20th devfacts", fill_dense, escape_into},
    {"escape_20th copy", fill_dense, copy_text},
    {"escape_20th table", fill_dense, escape_by_table},
    {"escape_all devfacts", fill_entities, escape_into},
    {"escape_all copy", fill_entities, copy_text},
    {"escape_all table", fill_entities, escape_by_table},
    {"escape_allocated devfacts", fill_short, escape_allocated},
    {"escape_allocated copy", fill_short, copy_allocated},
    {"report devfacts", add_interface, report},
    {"report fwrite", keep_document, write_document},
    {"int_item devfacts", fill_short, print_int},
    {"int_item fwrite", fill_short, write_item},
    {"int_item printf", fill_short, print_item},
    {"text_item devfacts", fill_short, print_text},
    {"text_item fwrite", fill_short, write_item},
    {"escaped_item devfacts", fill_short, print_escaped},
    {"escaped_item fwrite", fill_short, write_item},
    {"walk devfacts", write_lines, walk_lines},
    {"walk fgets", write_lines, read_by_fgets},
    {"first_match devfacts", write_lines, find_line},
    {"first_match fgets", write_lines, read_by_fgets},
    {"address devfacts", fill_short, parse_address},
    {"address sscanf", fill_short, scan_address},
    {"translate devfacts", write_catalogue, translate},
    {"translate fgets", write_catalogue, read_catalogue},
    {"load devfacts", write_store, load_records},
    {"load records", write_store, load_bare},
    {"save devfacts", write_store, eeprom_write},
    {"save mmap", write_store, write_mapped},
    {"update devfacts", write_store, update_records},
    {"update records", write_store, fill_blocks},
    {"message devfacts", open_ends, send_message},
    {"message bare", open_ends, send_bare},
};

}  // namespace

int main(int argc, char **argv) {
  for (const work &each : works) {
    if (argc < 3) {
      std::puts(each.name);
    } else if (std::strcmp(each.name, argv[1]) == 0) {
      each.prepare();
      for (int round = std::atoi(argv[2]); round > 0; --round) each.round();
    }
  }
}
