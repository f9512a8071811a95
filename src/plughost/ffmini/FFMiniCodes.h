/* The codes of the interpreter's tree, shared by its parser (FFMiniParse.c)
   and its tree walker (FFMini.c). */
#pragma once

enum { kConst, kSym, kUnary, kBinary, kCond, kSeq, kCall };
enum { sx, sy, sX, sY, sz, sZ, sr, sg, sb, sa, sc, si, su, sv, sd, sm, sM };
enum { uNeg, uNot, uBitNot };
enum { bMul, bDiv, bMod, bAdd, bSub, bShl, bShr, bLt, bLe, bGt, bGe, bEq, bNe, bAnd, bXor, bOr, bLogAnd, bLogOr };
enum {
  fSrc, fRad, fCnv, fCtl, fVal, fMap, fMin, fMax, fAbs, fAdd, fSub, fDif, fMix, fScl,
  fSqr, fSin, fCos, fTan, fR2x, fR2y, fC2d, fC2m, fRnd, fRst, fGet, fPut
};
