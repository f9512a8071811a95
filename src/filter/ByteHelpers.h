// The small byte and text helpers that all filter readers and writers share.
// They work on one open BinFile, by 1-based position or at the current position.
#pragma once

#include <cstdint>
#include <string>

#include "base/BinFile.h"

namespace trel {

// Code field of a compiled plugin: as bytes2string2, and `//` comments vanish
// up to and including the next CR (even one far behind the field's end).
std::string bytes2string(int64_t position, BinFile& file);
// Text field of a compiled plugin: bytes up to a 0 byte; CR and a CR LF pair
// vanish. A 0 in the very first byte does not end the field: it is kept as a
// character and reading goes on, so a field beginning with 0 yields the text
// behind it.
std::string bytes2string2(int64_t position, BinFile& file);

void string2bytes(const std::string& s, int64_t position, BinFile& file);     // s, then 0
void string2bytes_w0(const std::string& s, int64_t position, BinFile& file);  // s only
void ReplaceB(const std::string& s, int64_t position, BinFile& file);  // s from position+1, then 0

void Writecode(const std::string& s, BinFile& file);  // s at the current position, then CR
std::string ReadtoD(BinFile& file);   // up to the next CR, which is dropped
std::string ReadtoDD(BinFile& file);  // up to a CR followed by a byte below 14
std::string Byt2str(BinFile& file);   // up to the next CR; CR and the byte behind it go

// The prefix of text up to the first delimiter outside round brackets.
std::string GetUntill(const std::string& text, char delimiter);

// The leading decimal number of a text (blanks before it allowed, a sign
// allowed), 0 when there is none: how every number field of a source file is read.
long long LeadingNumber(const std::string& text);

}  // namespace trel
