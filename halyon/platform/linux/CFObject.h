// What every counted value of the platform begins with, and how one is made. Internal to this folder.
#pragma once

#include <cstddef>
#include <new>

#include <halyon/platform/CoreFoundation.h>

namespace Halyon
{
struct CFObject
{
    std::int32_t nRefCount = 1;
    void (*destroy)(CFObject*) noexcept = nullptr;
};

// For values that hold nothing but their own memory.
inline void CFFreeObject(CFObject* object) noexcept
{
    ::operator delete(object);
}

// A new value with one reference and `extraBytes` of room behind it; null when there is no memory.
template <class T>
T* CFMakeObject(std::size_t extraBytes, void (*destroy)(CFObject*) noexcept = CFFreeObject) noexcept
{
    void* memory = ::operator new(sizeof(T) + extraBytes, std::nothrow);
    if (memory == nullptr)
        return nullptr;
    auto* object = new (memory) T;
    object->destroy = destroy;
    return object;
}
} // namespace Halyon
