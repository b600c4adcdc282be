// Messages from a sender to a receiver, both in this process, so on one CPU, against bare send and recv.
#include <benchmark/benchmark.h>
#include <devfacts/transport.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>

namespace {

constexpr char path[] = "transport.socket";
constexpr uint32_t head_size = 4;
constexpr char payload[1600] = "";

int receiver = -1;
int bare_sender = -1;
int received = 0;

int connect_bare() {
  const sockaddr_un address{AF_UNIX, "transport.socket"};
  const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0);
  if (connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) std::abort();
  return fd;
}

void open_ends() {
  if (receiver >= 0) return;
  receiver = socket_input_init(path);
  bare_sender = connect_bare();
  std::atexit([] { socket_input_shutdown(receiver, path); });
}

bool send_with_devfacts(uint32_t size) { return socket_write(payload, size, path) == 0; }

bool send_bare(uint32_t size) { return send(bare_sender, payload, size + head_size, MSG_NOSIGNAL) > 0; }

// What the library's calls to the kernel cost: before it sends, it asks whether the queue is full.
bool send_after_select(uint32_t size) {
  fd_set set;
  FD_ZERO(&set);
  FD_SET(bare_sender, &set);
  timeval limit{2, 0};
  return select(bare_sender + 1, nullptr, &set, nullptr, &limit) == 1 && send_bare(size);
}

bool receive_bare() {
  char buffer[1600];
  const ssize_t size = recv(receiver, buffer, sizeof buffer, MSG_DONTWAIT | MSG_NOSIGNAL);
  benchmark::DoNotOptimize(buffer);
  return size > 0;
}

int count(const void *bytes, uint32_t /*length*/) {
  benchmark::DoNotOptimize(bytes);
  return ++received;
}

int drain_with_devfacts() {
  fd_set set;
  FD_ZERO(&set);
  FD_SET(receiver, &set);
  received = 0;
  socket_read(receiver, &set, count);
  return received;
}

int drain_bare() {
  int messages = 0;
  while (receive_bare()) ++messages;
  return messages;
}

// So many bytes, received by recv.
void send(benchmark::State &state, bool (*send_message)(uint32_t size)) {
  open_ends();
  for (auto _ : state) {
    if (!send_message(static_cast<uint32_t>(state.range(0))) || !receive_bare()) std::abort();
  }
}

// So many messages that wait, sent by the library.
void drain(benchmark::State &state, int (*receive_all)()) {
  open_ends();
  for (auto _ : state) {
    for (int i = 0; i < state.range(0); ++i) send_with_devfacts(100);
    if (receive_all() != state.range(0)) std::abort();
  }
}

}  // namespace

BENCHMARK_CAPTURE(send, devfacts, send_with_devfacts)->Arg(100)->Arg(1500);
BENCHMARK_CAPTURE(send, limit, send_bare)->Arg(100)->Arg(1500);
BENCHMARK_CAPTURE(send, select, send_after_select)->Arg(100)->Arg(1500);
BENCHMARK_CAPTURE(drain, devfacts, drain_with_devfacts)->Arg(1)->Arg(10);
BENCHMARK_CAPTURE(drain, limit, drain_bare)->Arg(1)->Arg(10);
