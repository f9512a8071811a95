/* The parameter block of our template plugins (resource PARM 16) as their own
   code reads it: offsets from the block's start, which holds its own size.
   Shared by the 64-bit template, the small 32-bit templates and the dialog,
   so that all read the same places the compiler patches. Plain C. */
#ifndef TREL_FFBLOCK_H
#define TREL_FFBLOCK_H

#ifdef __cplusplus
extern "C" {
#endif

enum {
  kFFBlockSize = 8296,
  kFFStandAlone = 4,  /* 1: the slider dialog; 0: an editor plugin */
  kFFCtlValues = 8,   /* eight 4-byte slots, the value in the low byte */
  kFFScrambleTag = 40, /* "TRSC" and the key's seed when the code is scrambled */
  kFFMapFlags = 56,
  kFFCtlFlags = 72,
  kFFBlockTitle = 360,
  kFFBlockCopyright = 616,
  kFFBlockAuthor = 872,
  kFFMapNames = 1128,
  kFFCtlNames = 2152,
  kFFNameSize = 256,
  kFFCode = 4200, /* R, G, B, A, one after the other */
  kFFCodeFieldSize = 1024
};

/* Copies the four code fields (4 * kFFCodeFieldSize bytes, not necessarily
   0-terminated) into `out`. A demo or encrypted plugin keeps them XORed with
   an xorshift32 key stream whose seed stands behind the tag; that is undone.
   Returns 1 when the code was scrambled. */
static inline int FFReadCodeFields(const unsigned char* block, char* out) {
  const unsigned char* tag = block + kFFScrambleTag;
  const int scrambled = tag[0] == 'T' && tag[1] == 'R' && tag[2] == 'S' && tag[3] == 'C';
  unsigned int state = (unsigned int)tag[4] | (unsigned int)tag[5] << 8 | (unsigned int)tag[6] << 16 |
                       (unsigned int)tag[7] << 24;
  int i;
  if (!state) state = 1;
  for (i = 0; i < 4 * kFFCodeFieldSize; ++i) {
    unsigned char b = block[kFFCode + i];
    if (scrambled) {
      state ^= state << 13;
      state ^= state >> 17;
      state ^= state << 5;
      b = (unsigned char)(b ^ (state & 0xFF));
    }
    out[i] = (char)b;
  }
  return scrambled;
}

#ifdef __cplusplus
}
#endif

#endif
