// Text in filter records and plugin files is single-byte; windows show it as Latin-1.
#pragma once

#include <QString>
#include <string>

namespace trel {

inline QString Latin1(const std::string& s) { return QString::fromLatin1(s.data(), static_cast<qsizetype>(s.size())); }

}  // namespace trel
