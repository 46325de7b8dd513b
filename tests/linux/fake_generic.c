/*
 * SCSI generic devices of a test's own for a program that is started with this library preloaded.
 * $ZEM_FAKE_GENERIC is a folder: its folder "class" stands in for /sys/class/scsi_generic, and may
 * be missing; a file sgN beside it for /dev/sgN, and says what opening it gives: "camera" is a boot
 * loader that answers the inquiry and the identification, a number an errno. Opened paths are
 * appended to the file "opened" there.
 */
#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <scsi/sg.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static const char kFolder[] = "/sys/class/scsi_generic";
static const char kFile[] = "/dev/sg";

static int camera = -1;

static void* Next(const char* name) { return dlsym(RTLD_NEXT, name); }

/* Where a path of the system leads: into the test's folder, or nowhere else. */
static const char* Lead(const char* path, char* place, size_t size) {
  const char* const root = getenv("ZEM_FAKE_GENERIC");
  if (strcmp(path, kFolder) == 0) {
    snprintf(place, size, "%s/class", root);
    return place;
  }
  return path;
}

DIR* opendir(const char* path) {
  char place[4096];
  return ((DIR * (*)(const char*)) Next("opendir"))(Lead(path, place, sizeof(place)));
}

int access(const char* path, int mode) {
  char place[4096];
  return ((int (*)(const char*, int))Next("access"))(Lead(path, place, sizeof(place)), mode);
}

static int OpenGeneric(const char* name) {
  char path[4096];
  char answer[64] = "";
  int (*const next)(const char*, int, ...) = (int (*)(const char*, int, ...))Next("open");
  snprintf(path, sizeof(path), "%s/opened", getenv("ZEM_FAKE_GENERIC"));
  const int log = next(path, O_WRONLY | O_CREAT | O_APPEND, 0644);
  dprintf(log, "%s\n", name);
  close(log);
  snprintf(path, sizeof(path), "%s/%s", getenv("ZEM_FAKE_GENERIC"), name);
  const int file = next(path, O_RDONLY);
  if (file < 0 || read(file, answer, sizeof(answer) - 1) < 0) {
    return -1;
  }
  if (strncmp(answer, "camera", 6) == 0) {
    camera = file;
    return file;
  }
  close(file);
  errno = atoi(answer);
  return -1;
}

int open(const char* path, int flags, ...) {
  if (strncmp(path, kFile, sizeof(kFile) - 1) == 0) {
    return OpenGeneric(path + 5);
  }
  va_list further;
  va_start(further, flags);
  const int mode = va_arg(further, int);
  va_end(further);
  return ((int (*)(const char*, int, ...))Next("open"))(path, flags, mode);
}

int ioctl(int file, unsigned long code, ...) {
  static const unsigned char kInquiry[36] = {0, 0x80, 0, 1, 31};
  static const unsigned char kIdentity[16] = {0xAA, 0x55, 0, 0, 'V', 'S', 'N', '3'};
  va_list further;
  va_start(further, code);
  void* const argument = va_arg(further, void*);
  va_end(further);
  if (code != SG_IO || file != camera) {
    return ((int (*)(int, unsigned long, ...))Next("ioctl"))(file, code, argument);
  }
  sg_io_hdr_t* const request = argument;
  request->status = 0;
  request->resid = 0;
  if (request->cmdp[0] == 0x12) {
    memcpy(request->dxferp, kInquiry, sizeof(kInquiry));
  } else if (request->cmdp[3] == 0x01) {
    memcpy(request->dxferp, kIdentity, sizeof(kIdentity));
  } else {
    request->status = 2; /* refused */
  }
  return 0;
}
