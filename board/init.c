/* The board's first process: runs the programs of /runs one after the other, tells of each how it ended, and ends the
 * machine.
 *
 * A line of /runs is a place and a command, its words separated by blanks. The place is "board" for the board as it is,
 * "device" with the /proc of the sample device, "own" for namespaces as tests/support/in-namespace makes them, in
 * /data. Of each it writes the line "@ STATUS UNALIGNED COMMAND" behind the program's output: the exit status, 128 and
 * the signal, or 124 where the time was over; and the number of unaligned accesses that the kernel had to mend. The
 * last line is "@ end". */
#define _GNU_SOURCE
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/reboot.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

enum { seconds_for_each = 120, words_at_most = 64 };

static void mount_on(const char *type, const char *folder) {
  mkdir(folder, 0755);
  if (mount(type, folder, type, 0, NULL) != 0 && errno != EBUSY)
    printf("@ cannot mount %s: %s\n", folder, strerror(errno));
}

/* The serial line as it is: no carriage returns. */
static void open_console(void) {
  struct termios settings;
  int fd = open("/dev/console", O_RDWR);
  for (int each = 0; each <= 2; ++each) dup2(fd, each);
  if (fd > 2) close(fd);
  setvbuf(stdout, NULL, _IOLBF, 0);
  if (tcgetattr(1, &settings) != 0) return;
  settings.c_oflag &= ~(tcflag_t)OPOST;
  tcsetattr(1, TCSANOW, &settings);
}

static void bring_up(const char *name) {
  struct ifreq request = {0};
  int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  strncpy(request.ifr_name, name, IFNAMSIZ - 1);
  if (ioctl(fd, SIOCGIFFLAGS, &request) != 0) printf("@ no interface %s\n", name);
  request.ifr_flags |= IFF_UP;
  ioctl(fd, SIOCSIFFLAGS, &request);
  close(fd);
}

static long unaligned_accesses(void) {
  long count = -1;
  FILE *file = fopen("/sys/kernel/debug/mips/unaligned_instructions", "re");
  if (file == NULL || fscanf(file, "%ld", &count) != 1) puts("@ unaligned accesses are not counted");
  if (file != NULL) fclose(file);
  return count;
}

static void write_text(const char *path, const char *text) {
  int fd = open(path, O_WRONLY | O_CLOEXEC);
  if (write(fd, text, strlen(text)) < 0) printf("@ cannot write %s: %s\n", path, strerror(errno)), _exit(126);
  close(fd);
}

static void enter(const char *place) {
  if (strcmp(place, "board") == 0) return;
  int namespaces = strcmp(place, "own") == 0 ? CLONE_NEWUSER | CLONE_NEWNET | CLONE_NEWNS : CLONE_NEWNS;
  if (unshare(namespaces) != 0) printf("@ no namespaces: %s\n", strerror(errno)), _exit(126);
  if (strcmp(place, "own") == 0) {
    write_text("/proc/self/setgroups", "deny");
    write_text("/proc/self/uid_map", "0 0 1");
    write_text("/proc/self/gid_map", "0 0 1");
  }
  if (mount("none", "/", NULL, MS_REC | MS_PRIVATE, NULL) != 0) _exit(126);
  if (strcmp(place, "device") == 0 && umount2("/proc", MNT_DETACH) != 0) _exit(126);
  if (strcmp(place, "own") == 0 && chdir("/data") != 0) _exit(126);
}

static int run(const char *place, char **words) {
  pid_t child = fork();
  if (child == 0) {
    setsid();
    enter(place);
    alarm(seconds_for_each);
    execv(words[0], words);
    printf("@ cannot run %s: %s\n", words[0], strerror(errno));
    _exit(127);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  kill(-child, SIGKILL);
  while (waitpid(-1, NULL, WNOHANG) > 0) {
  }
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  return WTERMSIG(status) == SIGALRM ? 124 : 128 + WTERMSIG(status);
}

static void run_line(char *line) {
  char *words[words_at_most + 1], command[4096], *rest;
  int count = 0;
  line[strcspn(line, "\n")] = '\0';
  char *place = strtok_r(line, " ", &rest);
  if (place == NULL) return;
  snprintf(command, sizeof command, "%s", rest);
  for (char *word; count < words_at_most && (word = strtok_r(NULL, " ", &rest)) != NULL;) words[count++] = word;
  words[count] = NULL;
  long before = unaligned_accesses();
  int status = run(place, words);
  printf("\n@ %d %ld %s\n", status, unaligned_accesses() - before, command);
}

int main(void) {
  static const char *const folders[][2] = {
      {"devtmpfs", "/dev"}, {"proc", "/proc"}, {"sysfs", "/sys"}, {"debugfs", "/sys/kernel/debug"}};
  for (unsigned i = 0; i < sizeof folders / sizeof *folders; ++i) mount_on(folders[i][0], folders[i][1]);
  open_console();
  setenv("BOARD", "1", 1);
  bring_up("lo"), bring_up("eth0"), bring_up("eth1");
  char line[4096];
  FILE *runs = fopen("/runs", "re");
  while (runs != NULL && fgets(line, sizeof line, runs) != NULL) run_line(line);
  puts("@ end");
  sync();
  tcdrain(1);
  reboot(RB_AUTOBOOT);
  for (;;) pause();
}
