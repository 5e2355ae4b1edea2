#pragma once

#include <windows.h>

#include <shellapi.h>

#include <utility>

namespace Panelix {

/// Move-only owner of one system resource. Traits give its `Type`, its `empty()` value and `close(Type)`,
/// which is called exactly once for every value that is not empty and leaves the thread's last error as it
/// was.
template <typename Traits>
class UniqueResource {
public:
    using Type = typename Traits::Type;

    UniqueResource() noexcept = default;
    explicit UniqueResource(Type value) noexcept : value_(value) {}
    UniqueResource(UniqueResource&& other) noexcept : value_(other.release()) {}
    UniqueResource& operator=(UniqueResource&& other) noexcept {
        if (this != &other) {
            reset(other.release());
        }
        return *this;
    }
    UniqueResource(const UniqueResource&) = delete;
    UniqueResource& operator=(const UniqueResource&) = delete;
    ~UniqueResource() { reset(); }

    /// The resource, still owned by this object.
    Type get() const noexcept { return value_; }

    explicit operator bool() const noexcept { return value_ != Traits::empty(); }

    /// Closes what is held and takes over `value`.
    void reset(Type value = Traits::empty()) noexcept {
        const Type old = std::exchange(value_, value);
        if (old != Traits::empty()) {
            const DWORD lastError = GetLastError();
            Traits::close(old);
            SetLastError(lastError);
        }
    }

    /// Gives the resource up: the caller closes it.
    [[nodiscard]] Type release() noexcept { return std::exchange(value_, Traits::empty()); }

    /// Closes what is held and gives the address that an opening call writes to.
    Type* put() noexcept {
        reset();
        return &value_;
    }

private:
    Type value_ = Traits::empty();
};

namespace details {

/// Traits of a resource whose empty value is null and which one function closes.
template <typename Resource, auto closeFunction>
struct NullableTraits {
    using Type = Resource;
    static constexpr Type empty() noexcept { return nullptr; }
    static void close(Type value) noexcept { closeFunction(value); }
};

struct FileTraits {
    using Type = HANDLE;
    static Type empty() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Type value) noexcept { CloseHandle(value); }
};

}  // namespace details

using UniqueHandle = UniqueResource<details::NullableTraits<HANDLE, CloseHandle>>;
using UniqueFile = UniqueResource<details::FileTraits>;
using UniqueGlobal = UniqueResource<details::NullableTraits<HGLOBAL, GlobalFree>>;
using UniqueHkey = UniqueResource<details::NullableTraits<HKEY, RegCloseKey>>;
using UniqueModule = UniqueResource<details::NullableTraits<HMODULE, FreeLibrary>>;
using UniqueIcon = UniqueResource<details::NullableTraits<HICON, DestroyIcon>>;
using UniqueMenu = UniqueResource<details::NullableTraits<HMENU, DestroyMenu>>;
using UniqueDc = UniqueResource<details::NullableTraits<HDC, DeleteDC>>;
using UniqueBitmap = UniqueResource<details::NullableTraits<HBITMAP, DeleteObject>>;
using UniqueMappedView = UniqueResource<details::NullableTraits<LPVOID, UnmapViewOfFile>>;

}  // namespace Panelix
