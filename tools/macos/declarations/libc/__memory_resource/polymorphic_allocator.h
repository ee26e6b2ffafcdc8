// Newer than the oldest system that Lumo runs on. The containers name it and compile all the same,
// those of std::pmr do not, nor does <regex>.
#pragma once

#include <__config>

_LIBCPP_BEGIN_NAMESPACE_STD
namespace pmr {
template <class Type>
class polymorphic_allocator;
}
_LIBCPP_END_NAMESPACE_STD
