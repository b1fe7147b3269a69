// CopyOnWrite<T>: a rarely used, bulky group of fields that costs one pointer while all of it is zero.
#pragma once

#include <memory>

namespace vellum {

/// A value of T that is shared when copied and copied on its first write. A default one reads as `T{}`.
template <class T>
class CopyOnWrite {
 public:
  const T& operator*() const { return value_ ? *value_ : zero(); }
  const T* operator->() const { return &**this; }

  /// The value for writing, shared with nobody.
  T& edit() {
    if (!value_)
      value_ = std::make_shared<T>();
    else if (value_.use_count() > 1)
      value_ = std::make_shared<T>(*value_);
    return *value_;
  }
  void reset() { value_.reset(); }

 private:
  static const T& zero() {
    static const T value{};
    return value;
  }
  std::shared_ptr<T> value_;
};

}  // namespace vellum
