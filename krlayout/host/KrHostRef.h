// An owned reference to a host automation object: released when the holder goes out of scope.
#pragma once

#include <krlayout/host/IHostUnknown.h>
#include <krlayout/host/KrHostInterfaceId.h>

template <class T>
class KrHostRef {
public:
    KrHostRef() noexcept : ptr(nullptr) {}
    // Adopts one reference that the caller already holds.
    explicit KrHostRef(T* adopted) noexcept : ptr(adopted) {}
    ~KrHostRef() { Reset(); }

    KrHostRef(KrHostRef&& other) noexcept : ptr(other.ptr) { other.ptr = nullptr; }
    KrHostRef& operator=(KrHostRef&& other) noexcept
    {
        if (this != &other) {
            Reset();
            ptr = other.ptr;
            other.ptr = nullptr;
        }
        return *this;
    }
    KrHostRef(KrHostRef const&) = delete;
    KrHostRef& operator=(KrHostRef const&) = delete;

    T* Get() const noexcept { return ptr; }
    T* operator->() const noexcept { return ptr; }
    explicit operator bool() const noexcept { return ptr != nullptr; }

    // Out slot for a host request: the reference held so far is released first.
    T** Out() noexcept
    {
        Reset();
        return &ptr;
    }

    // Gives the reference up to the caller, who must release it.
    T* Detach() noexcept
    {
        T* p = ptr;
        ptr = nullptr;
        return p;
    }

    void Reset() noexcept
    {
        if (ptr != nullptr) {
            T* p = ptr;
            ptr = nullptr;
            p->Release();
        }
    }

private:
    T* ptr;
};

// Asks `from` for the interface `id` and returns it as T (empty when `from` is null or the object
// does not have that interface). A non-null answer is taken even when the status is not OK, so
// that a reference handed out is never lost.
template <class T>
KrHostRef<T> KrHostQuery(IHostUnknown* from, KrHostInterfaceId id)
{
    if (from == nullptr) {
        return KrHostRef<T>();
    }
    void* object = nullptr;
    from->QueryInterface(id, &object);
    return KrHostRef<T>(static_cast<T*>(object));
}
