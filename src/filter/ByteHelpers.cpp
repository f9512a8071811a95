#include "filter/ByteHelpers.h"

#include <cctype>

namespace trel {
namespace {

constexpr int kCR = 13;
constexpr int kLF = 10;

// The walk shared by both field readers. `stripComments` adds the code-field
// rule: `//` drops everything up to and including the next CR. A read past the
// end of the file (-1) always ends the field, so a truncated plugin cannot make
// the walk run on.
std::string ReadField(int64_t position, BinFile& file, bool stripComments) {
  std::string out;
  int64_t i = 0;
  int byte = file.ByteAt(position + i);
  while (byte >= 0) {
    if (stripComments && byte == '/') {
      ++i;
      const int next = file.ByteAt(position + i);
      if (next == '/') {
        // Skip the comment; the CR that ends it is tested below like any byte.
        do {
          ++i;
          byte = file.ByteAt(position + i);
        } while (byte >= 0 && byte != kCR);
        if (byte < 0) break;
      } else {
        out += '/';
        byte = next;  // the second byte is treated as the current one
        if (byte < 0) break;
      }
    }
    if (byte == 0 && i > 0) break;
    if (byte == kCR) {
      ++i;
      byte = file.ByteAt(position + i);
      if (byte != kLF) continue;  // read the byte behind the CR again as a new one
    } else {
      out += static_cast<char>(byte);
    }
    ++i;
    byte = file.ByteAt(position + i);
  }
  return out;
}

}  // namespace

std::string bytes2string(int64_t position, BinFile& file) { return ReadField(position, file, true); }

std::string bytes2string2(int64_t position, BinFile& file) {
  return ReadField(position, file, false);
}

void string2bytes(const std::string& s, int64_t position, BinFile& file) {
  file.WriteAt(position, s);
  file.Put(0);
}

void string2bytes_w0(const std::string& s, int64_t position, BinFile& file) {
  file.WriteAt(position, s);
}

// The shift of one against string2bytes is intended: it writes over a field
// whose first byte is a length or a flag.
void ReplaceB(const std::string& s, int64_t position, BinFile& file) {
  file.WriteAt(position + 1, s);
  file.Put(0);
}

void Writecode(const std::string& s, BinFile& file) {
  file.Write(s);
  file.Put(kCR);
}

std::string ReadtoD(BinFile& file) {
  std::string out;
  for (int byte = file.Get(); byte >= 0 && byte != kCR; byte = file.Get())
    out += static_cast<char>(byte);
  return out;
}

// A CR followed by a byte of 14 or more is a line break inside a code string:
// the CR is dropped, the byte kept, and the line goes on.
std::string ReadtoDD(BinFile& file) {
  std::string out;
  for (int byte = file.Get(); byte >= 0; byte = file.Get()) {
    if (byte != kCR) {
      out += static_cast<char>(byte);
      continue;
    }
    const int next = file.Get();
    if (next < 0 || next < 14) break;
    out += static_cast<char>(next);
  }
  return out;
}

std::string Byt2str(BinFile& file) {
  std::string out;
  for (int byte = file.Get(); byte >= 0; byte = file.Get()) {
    if (byte == kCR) {
      file.Get();
      break;
    }
    out += static_cast<char>(byte);
  }
  return out;
}

std::string GetUntill(const std::string& text, char delimiter) {
  std::string out;
  int depth = 0;
  for (char c : text) {
    if (c == delimiter && depth == 0) break;
    if (c == '(') ++depth;
    if (c == ')') --depth;
    out += c;
  }
  return out;
}

long long LeadingNumber(const std::string& text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  long long value = 0;
  for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i) {
    if (value < 100000000000LL) value = value * 10 + (text[i] - '0');
  }
  return negative ? -value : value;
}

}  // namespace trel
