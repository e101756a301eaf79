// An owning COM interface pointer: released when it goes, so that every early
// return on a failed call on the client's document frees what was taken.
#pragma once

#include <unknwn.h>

#include <utility>

namespace brindle {

template <typename T>
class ComRef {
 public:
  ComRef() = default;
  ComRef(const ComRef& other) : p_(other.p_) {
    if (p_) p_->AddRef();
  }
  ComRef(ComRef&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
  ComRef& operator=(ComRef other) noexcept {
    std::swap(p_, other.p_);
    return *this;
  }
  ~ComRef() {
    if (p_) p_->Release();
  }

  // Takes over a reference the caller already holds.
  static ComRef Adopt(T* p) {
    ComRef r;
    r.p_ = p;
    return r;
  }
  // For out parameters: releases what it held first.
  T** Out() {
    *this = ComRef();
    return &p_;
  }
  template <typename U>
  ComRef<U> As(REFIID iid) const {
    ComRef<U> other;
    if (p_) p_->QueryInterface(iid, reinterpret_cast<void**>(other.Out()));
    return other;
  }
  T* operator->() const { return p_; }
  T* get() const { return p_; }
  explicit operator bool() const { return p_ != nullptr; }

 private:
  T* p_ = nullptr;
};

}  // namespace brindle
