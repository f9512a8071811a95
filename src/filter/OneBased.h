// A fixed array indexed from 1, as the filter record's name and value lists are
// everywhere in the file formats (control 1..8, map 1..4).
#pragma once

#include <array>
#include <cassert>
#include <cstddef>

namespace trel {

template <typename T, std::size_t N>
struct OneBased {
  std::array<T, N> items{};

  T& operator[](int i) {
    assert(i >= 1 && static_cast<std::size_t>(i) <= N);
    return items[static_cast<std::size_t>(i - 1)];
  }
  const T& operator[](int i) const {
    assert(i >= 1 && static_cast<std::size_t>(i) <= N);
    return items[static_cast<std::size_t>(i - 1)];
  }
  static constexpr int size() { return static_cast<int>(N); }
  auto begin() { return items.begin(); }
  auto end() { return items.end(); }
  auto begin() const { return items.begin(); }
  auto end() const { return items.end(); }
  bool operator==(const OneBased&) const = default;
};

}  // namespace trel
