// SPDX-License-Identifier: MIT
// One argument of a call, for the log.
#pragma once

#include <type_traits>

/// An argument as the log shows it: a number, or whether a pointer is null. A plain value.
class TCallArgument final
{
public:
  template <class T>
  requires std::is_integral_v<T> TCallArgument(T number) : kind_(kWhole), whole_(static_cast<long long>(number)) {}
  template <class T>
  requires std::is_floating_point_v<T> TCallArgument(T number) : kind_(kReal), real_(static_cast<double>(number))
  {
  }
  template <class T>
  TCallArgument(T* pointer) : kind_(pointer ? kPointer : kNull)
  {
  }
  template <class T>
  requires std::is_class_v<T> TCallArgument(const T& /*object*/) : kind_(kPointer) {}

  bool IsNull() const { return kind_ == kNull; }
  template <class TText>
  void AppendTo(TText& text) const
  {
    if (kind_ == kWhole)
      text.Append("%lld", whole_);
    else if (kind_ == kReal)
      text.Append("%.7g", real_);
    else
      text.Append("%s", IsNull() ? "null" : "not null");
  }

private:
  enum
  {
    kWhole,
    kReal,
    kPointer,
    kNull
  } kind_;
  long long whole_ = 0;
  double real_ = 0.0;
};
