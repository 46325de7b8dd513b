/* Takes one frame from a camera through V4L2 and writes it as a BMP file with the library's help.
 * Plain C, Linux:
 *
 *   grab_frame /dev/video0 frame.bmp
 *
 * The kernel fills buffers of its own, which this program maps into its memory (mmap streaming). */
#include <errno.h>
#include <fcntl.h>
#include <linux/videodev2.h>
#include <locale.h>
#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <wchar.h>

#include "ZemUVCExtApi.h"

#define BUFFERS 4
#define FRAME_TIMEOUT_MS 10000

/* One of the kernel's buffers, seen from here. */
struct buffer {
  uint8_t* start;
  size_t length;
};

/* As ioctl, but begun again when a signal came first. */
static int control(int camera, unsigned long request, void* argument) {
  int result = -1;
  do {
    result = ioctl(camera, request, argument);
  } while (result < 0 && errno == EINTR);
  return result;
}

/* What most requests about buffers begin with. */
static struct v4l2_buffer mapped_buffer(unsigned index) {
  struct v4l2_buffer buffer = {0};
  buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
  buffer.memory = V4L2_MEMORY_MMAP;
  buffer.index = index;
  return buffer;
}

/* Asks for YUY2 in the size that the camera has chosen; what it cannot give is an error here. */
static int choose_format(int camera, struct v4l2_pix_format* chosen) {
  struct v4l2_format format = {0};
  format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
  if (control(camera, VIDIOC_G_FMT, &format) < 0) {
    return -1;
  }
  format.fmt.pix.pixelformat = V4L2_PIX_FMT_YUYV;
  if (control(camera, VIDIOC_S_FMT, &format) < 0) {
    return -1;
  }
  *chosen = format.fmt.pix;
  if (chosen->pixelformat != V4L2_PIX_FMT_YUYV || chosen->bytesperline != 2 * chosen->width) {
    errno = ENOTSUP;
    return -1;
  }
  return 0;
}

/* Has the kernel make its buffers, maps them, and hands all of them over to be filled. */
static int prepare_buffers(int camera, struct buffer* buffers, unsigned* count) {
  struct v4l2_requestbuffers request = {0};
  request.count = BUFFERS;
  request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
  request.memory = V4L2_MEMORY_MMAP;
  if (control(camera, VIDIOC_REQBUFS, &request) < 0) {
    return -1;
  }
  for (unsigned index = 0; index < request.count && index < BUFFERS; ++index) {
    struct v4l2_buffer buffer = mapped_buffer(index);
    if (control(camera, VIDIOC_QUERYBUF, &buffer) < 0) {
      return -1;
    }
    void* const start =
        mmap(NULL, buffer.length, PROT_READ, MAP_SHARED, camera, (off_t)buffer.m.offset);
    if (start == MAP_FAILED) {
      return -1;
    }
    buffers[index].start = start;
    buffers[index].length = buffer.length;
    *count = index + 1;
    if (control(camera, VIDIOC_QBUF, &buffer) < 0) {
      return -1;
    }
  }
  return 0;
}

/* Waits for a whole frame and copies it. A frame of which something was lost goes back to be filled
 * again. */
static int take_frame(int camera, const struct buffer* buffers, uint8_t* frame, size_t size) {
  for (;;) {
    struct pollfd ready = {camera, POLLIN, 0};
    const int count = poll(&ready, 1, FRAME_TIMEOUT_MS);
    if (count <= 0) {
      errno = count == 0 ? ETIMEDOUT : errno;
      return -1;
    }
    struct v4l2_buffer buffer = mapped_buffer(0);
    if (control(camera, VIDIOC_DQBUF, &buffer) < 0) {
      return -1;
    }
    const struct buffer* const filled = buffer.index < BUFFERS ? &buffers[buffer.index] : NULL;
    if (filled == NULL || filled->start == NULL || filled->length < size) {
      errno = EPROTO;
      return -1;
    }
    if ((buffer.flags & V4L2_BUF_FLAG_ERROR) == 0 && buffer.bytesused == size) {
      memcpy(frame, filled->start, size);
      return 0;
    }
    if (control(camera, VIDIOC_QBUF, &buffer) < 0) {
      return -1;
    }
  }
}

/* The library takes wide paths. */
static int write_bmp(const char* path, const uint8_t* frame, uint32_t width, uint32_t height) {
  wchar_t wide[FILENAME_MAX];
  const size_t length = mbstowcs(wide, path, FILENAME_MAX);
  if (length == (size_t)-1 || length == FILENAME_MAX) {
    errno = EINVAL;
    return -1;
  }
  return ConvertYUY2toBMP(wide, frame, width, height) == 1 ? 0 : -1;
}

/* Takes the frame while the camera streams, and writes it. */
static const char* grab(int camera, struct buffer* buffers, unsigned* count, const char* path) {
  struct v4l2_pix_format format;
  if (choose_format(camera, &format) < 0) {
    return "the camera gives no YUY2";
  }
  if (prepare_buffers(camera, buffers, count) < 0) {
    return "the kernel gives no buffers";
  }
  int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
  if (control(camera, VIDIOC_STREAMON, &type) < 0) {
    return "the camera does not stream";
  }
  const size_t size = 2 * (size_t)format.width * format.height;
  uint8_t* const frame = malloc(size);
  const char* failure = NULL;
  if (frame == NULL || take_frame(camera, buffers, frame, size) < 0) {
    failure = "no frame came";
  } else if (write_bmp(path, frame, format.width, format.height) < 0) {
    failure = "the file cannot be written";
  } else {
    printf("%ux%u\n", format.width, format.height);
  }
  free(frame);
  control(camera, VIDIOC_STREAMOFF, &type);
  return failure;
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: grab_frame DEVICE FILE\n");
    return 2;
  }
  setlocale(LC_ALL, "");
  const int camera = open(argv[1], O_RDWR | O_CLOEXEC);
  if (camera < 0) {
    fprintf(stderr, "%s: %s\n", argv[1], strerror(errno));
    return 1;
  }
  struct buffer buffers[BUFFERS] = {{NULL, 0}};
  unsigned count = 0;
  const char* const failure = grab(camera, buffers, &count, argv[2]);
  if (failure != NULL) {
    fprintf(stderr, "%s: %s (%s)\n", argv[1], failure, strerror(errno));
  }
  while (count > 0) {
    --count;
    munmap(buffers[count].start, buffers[count].length);
  }
  close(camera);
  return failure == NULL ? 0 : 1;
}
