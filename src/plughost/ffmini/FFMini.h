/* A compact Filter Factory interpreter for the small 32-bit templates, where
   the full engine of src/host/ff does not fit. It parses the four channel
   expressions into trees and walks them pixel by pixel, channel by channel,
   in the language's order; every value, limit and parse fault is the
   engine's, so a filter gives the same pixels in either.

   Plain C with no runtime library and no operating system calls: the same
   unit builds into the plugin DLLs and into the native tests. All storage is
   in the caller's FFMini object; nothing is allocated. */
#ifndef TREL_FFMINI_H
#define TREL_FFMINI_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
  kFFMiniCodeSize = 1024, /* longest expression read; a code field's size */
  kFFMiniMaxNodes = 1024  /* one node per token at most, so a full field fits */
};

typedef struct FFMiniNode {
  uint8_t kind;
  uint8_t code;
  uint8_t kidCount;
  uint8_t unused;
  uint16_t height;
  uint16_t firstKid;
  int32_t value;
} FFMiniNode;

typedef struct FFMiniTree {
  FFMiniNode node[kFFMiniMaxNodes];
  uint16_t kid[kFFMiniMaxNodes];
  int nodeCount, kidCount, root;
} FFMiniTree;

typedef struct FFMini {
  FFMiniTree tree[4]; /* R, G, B, A */
  int errorChannel;   /* after a failed compile: the faulty channel, 0..3 */
  int errorPosition;  /* and the 0-based character position of the fault */
} FFMini;

/* Parses the R, G, B and A expressions, each up to its first 0 byte or
   kFFMiniCodeSize bytes. Returns 1, or 0 when any channel is faulty. */
int FFMiniCompile(FFMini* m, const char* const code[4]);

/* A picture as bytes: pixel (x, y) channel z at pixels[y * stride + x * step + z]. */
typedef struct FFMiniPicture {
  unsigned char* pixels;
  int width, height;
  int stride, step;
} FFMiniPicture;

/* Polled before every row; nonzero stops the run. */
typedef int (*FFMiniCancelProc)(void* context);

enum { kFFMiniDone = 0, kFFMiniCancelled = 1, kFFMiniInvalid = -1 };

/* Runs a compiled filter over `src` into `dst` (same size, other memory).
   With `alpha` the picture has four channels (step at least 4), otherwise
   three and, where dst has a fourth byte, it becomes 255. */
int FFMiniRender(const FFMini* m, const int32_t ctl[8], const FFMiniPicture* src, int alpha,
                 const FFMiniPicture* dst, FFMiniCancelProc cancel, void* context);

/* The fixed-point tables behind sin, cos, tan, r2x, r2y, c2d and c2m. */
typedef struct FFMiniTables {
  int32_t cosT[1024];  /* cosine, scale 16384 */
  int32_t atanT[1024]; /* arctangent of (k+1)/1024, scale 65536 */
  int32_t magT[1024];  /* magnitude correction for c2m */
} FFMiniTables;
const FFMiniTables* FFMiniGetTables(void);

#ifdef __cplusplus
}
#endif

#endif
