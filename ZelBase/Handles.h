#pragma once

// The kernel's resources as owners: which function closes which handle is written here once.

#include "ZelBase/UniqueResource.h"

#include <windows.h>

namespace ZelBase {

// Events, mutexes, threads, processes, file mappings: whatever is null when there is none.
struct KernelHandleTraits {
    using Type = HANDLE;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type handle) noexcept { CloseHandle(handle); }
};
using UniqueHandle = UniqueResource<KernelHandleTraits>;

// What CreateFile returns, whose "none" is INVALID_HANDLE_VALUE.
struct FileHandleTraits {
    using Type = HANDLE;
    static Type Empty() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Type handle) noexcept { CloseHandle(handle); }
};
using UniqueFile = UniqueResource<FileHandleTraits>;

struct FindHandleTraits {
    using Type = HANDLE;
    static Type Empty() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Type handle) noexcept { FindClose(handle); }
};
using UniqueFind = UniqueResource<FindHandleTraits>;

struct LibraryTraits {
    using Type = HMODULE;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type library) noexcept { FreeLibrary(library); }
};
using UniqueLibrary = UniqueResource<LibraryTraits>;

struct MappedViewTraits {
    using Type = void*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type view) noexcept { UnmapViewOfFile(view); }
};
using UniqueMappedView = UniqueResource<MappedViewTraits>;

} // namespace ZelBase
