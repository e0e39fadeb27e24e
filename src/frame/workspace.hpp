// Heap memory for the duration of one call: taken at construction, released on every path.
#ifndef FATHOM_FRAME_WORKSPACE_HPP
#define FATHOM_FRAME_WORKSPACE_HPP

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <type_traits>

namespace fathom {

// An uninitialised array of `count` elements, or null when the memory is not to be had or its size
// in bytes cannot be expressed. Test it as a bool before use.
template <typename T>
class Workspace {
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

 public:
  explicit Workspace(std::size_t count) noexcept
      : data_(count <= PTRDIFF_MAX / sizeof(T)
                  ? static_cast<T*>(std::malloc(count == 0 ? 1 : count * sizeof(T)))
                  : nullptr) {}
  ~Workspace() { std::free(data_); }
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  explicit operator bool() const noexcept { return data_ != nullptr; }
  T* data() noexcept { return data_; }
  const T* data() const noexcept { return data_; }
  T& operator[](std::size_t i) noexcept { return data_[i]; }
  const T& operator[](std::size_t i) const noexcept { return data_[i]; }

 private:
  T* data_;
};

}  // namespace fathom

#endif
