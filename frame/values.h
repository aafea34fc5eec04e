// Owner types for the automation and GDI resources the library handles, and the
// automation conversions every class relies on.
#pragma once

#include "typelib.h"

#include <cmath>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#include <cstring>
#include <string>
#include <utility>

namespace tova {

// ------------------------------------------------------------------ COM pointers

template <class T>
class ComPtr {
public:
    ComPtr() = default;
    ComPtr(std::nullptr_t) {}
    explicit ComPtr(T* p, bool addRef = true) : p_(p) { if (p_ && addRef) p_->AddRef(); }
    ComPtr(const ComPtr& o) : p_(o.p_) { if (p_) p_->AddRef(); }
    ComPtr(ComPtr&& o) noexcept : p_(o.p_) { o.p_ = nullptr; }
    ~ComPtr() { reset(); }
    ComPtr& operator=(ComPtr o) noexcept { std::swap(p_, o.p_); return *this; }

    void reset() { if (p_) { T* p = p_; p_ = nullptr; p->Release(); } }
    T* get() const { return p_; }
    T* operator->() const { return p_; }
    explicit operator bool() const { return p_ != nullptr; }
    // For out-parameters: releases what is held first.
    T** put() { reset(); return &p_; }
    void** putVoid() { return reinterpret_cast<void**>(put()); }
    T* detach() { T* p = p_; p_ = nullptr; return p; }

    template <class U>
    ComPtr<U> as(REFIID iid) const {
        ComPtr<U> r;
        if (p_) p_->QueryInterface(iid, r.putVoid());
        return r;
    }

private:
    T* p_ = nullptr;
};

// ------------------------------------------------------------------------ BSTR

class Bstr {
public:
    Bstr() = default;
    explicit Bstr(const wchar_t* s) : s_(s ? SysAllocString(s) : nullptr) {}
    Bstr(const wchar_t* s, size_t n) : s_(SysAllocStringLen(s, static_cast<UINT>(n))) {}
    explicit Bstr(const std::wstring& s) : Bstr(s.data(), s.size()) {}
    Bstr(const Bstr& o) : s_(o.s_ ? SysAllocStringLen(o.s_, SysStringLen(o.s_)) : nullptr) {}
    Bstr(Bstr&& o) noexcept : s_(o.s_) { o.s_ = nullptr; }
    ~Bstr() { SysFreeString(s_); }
    Bstr& operator=(Bstr o) noexcept { std::swap(s_, o.s_); return *this; }

    static Bstr attach(BSTR s) { Bstr b; b.s_ = s; return b; }
    BSTR get() const { return s_; }
    BSTR* put() { SysFreeString(s_); s_ = nullptr; return &s_; }
    // The string in place, for a by-reference argument the callee may replace.
    BSTR& ref() { return s_; }
    BSTR detach() { BSTR s = s_; s_ = nullptr; return s; }
    UINT length() const { return SysStringLen(s_); }
    std::wstring str() const { return s_ ? std::wstring(s_, SysStringLen(s_)) : std::wstring(); }

private:
    BSTR s_ = nullptr;
};

// --------------------------------------------------------------------- VARIANT

class Variant : public VARIANT {
public:
    Variant() { VariantInit(this); }
    Variant(const Variant& o) { VariantInit(this); VariantCopy(this, const_cast<Variant*>(&o)); }
    Variant(Variant&& o) noexcept { *static_cast<VARIANT*>(this) = o; V_VT(&o) = VT_EMPTY; }
    explicit Variant(long v) { VariantInit(this); V_VT(this) = VT_I4; V_I4(this) = v; }
    explicit Variant(double v) { VariantInit(this); V_VT(this) = VT_R8; V_R8(this) = v; }
    explicit Variant(const wchar_t* s) { VariantInit(this); V_VT(this) = VT_BSTR; V_BSTR(this) = SysAllocString(s); }
    explicit Variant(IDispatch* d) { VariantInit(this); V_VT(this) = VT_DISPATCH; V_DISPATCH(this) = d; if (d) d->AddRef(); }
    ~Variant() { VariantClear(this); }
    Variant& operator=(Variant o) noexcept {
        VARIANT t = *this; *static_cast<VARIANT*>(this) = o; *static_cast<VARIANT*>(&o) = t;
        return *this;
    }

    void clear() { VariantClear(this); }
    VARIANT* put() { VariantClear(this); return this; }
    // Hands the value to a caller-owned VARIANT, leaving this Empty.
    void detachTo(VARIANT* out) { *out = *this; VariantInit(this); }
};

// ------------------------------------------------------------------- SAFEARRAY

class SafeArray {
public:
    SafeArray() = default;
    explicit SafeArray(SAFEARRAY* a) : a_(a) {}
    SafeArray(const SafeArray&) = delete;
    SafeArray& operator=(const SafeArray&) = delete;
    SafeArray(SafeArray&& o) noexcept : a_(o.a_) { o.a_ = nullptr; }
    ~SafeArray() { if (a_) SafeArrayDestroy(a_); }

    SAFEARRAY* get() const { return a_; }
    SAFEARRAY* detach() { SAFEARRAY* a = a_; a_ = nullptr; return a; }

private:
    SAFEARRAY* a_ = nullptr;
};

// Holds a SAFEARRAY's data locked for direct access.
class ArrayData {
public:
    explicit ArrayData(SAFEARRAY* a) : a_(a) { if (a_ && FAILED(::SafeArrayLock(a_))) a_ = nullptr; }
    ArrayData(const ArrayData&) = delete;
    ArrayData& operator=(const ArrayData&) = delete;
    ~ArrayData() { if (a_) ::SafeArrayUnlock(a_); }
    bool locked() const { return a_ != nullptr; }
    void* data() const { return a_ ? a_->pvData : nullptr; }

private:
    SAFEARRAY* a_;
};

// ------------------------------------------------------------- kernel handles

// A handle closed by `Close` when it goes; `Invalid` marks none (INVALID_HANDLE_VALUE
// for files and searches).
template <BOOL(WINAPI* Close)(HANDLE)>
class KernelHandle {
public:
    explicit KernelHandle(HANDLE h = INVALID_HANDLE_VALUE) : h_(h) {}
    KernelHandle(const KernelHandle&) = delete;
    KernelHandle& operator=(const KernelHandle&) = delete;
    ~KernelHandle() { if (ok()) Close(h_); }
    HANDLE get() const { return h_; }
    bool ok() const { return h_ != INVALID_HANDLE_VALUE; }

private:
    HANDLE h_;
};

using FileHandle = KernelHandle<CloseHandle>;   // CreateFileW
using FindHandle = KernelHandle<FindClose>;     // FindFirstFileExW

// A process, thread or event handle, closed when it goes; null marks none.
class ObjectHandle {
public:
    explicit ObjectHandle(HANDLE h = nullptr) : h_(h) {}
    ObjectHandle(ObjectHandle&& o) noexcept : h_(o.h_) { o.h_ = nullptr; }
    ObjectHandle& operator=(ObjectHandle&& o) noexcept { std::swap(h_, o.h_); return *this; }
    ObjectHandle(const ObjectHandle&) = delete;
    ObjectHandle& operator=(const ObjectHandle&) = delete;
    ~ObjectHandle() { if (h_) CloseHandle(h_); }
    HANDLE get() const { return h_; }
    explicit operator bool() const { return h_ != nullptr; }

private:
    HANDLE h_;
};

// An open registry key, closed when it goes.
class RegistryKey {
public:
    RegistryKey() = default;
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    ~RegistryKey() { reset(); }
    HKEY get() const { return h_; }
    HKEY* put() { reset(); return &h_; }
    void reset() {
        if (h_) RegCloseKey(h_);
        h_ = nullptr;
    }
    explicit operator bool() const { return h_ != nullptr; }

private:
    HKEY h_ = nullptr;
};

// ------------------------------------------------------------------------- GDI

// A GDI object (pen, brush, font, bitmap, region) deleted when it goes.
template <class H>
class GdiObject {
public:
    GdiObject() = default;
    explicit GdiObject(H h) : h_(h) {}
    GdiObject(const GdiObject&) = delete;
    GdiObject& operator=(const GdiObject&) = delete;
    GdiObject(GdiObject&& o) noexcept : h_(o.h_) { o.h_ = nullptr; }
    GdiObject& operator=(GdiObject&& o) noexcept {
        if (this != &o) {
            if (h_) DeleteObject(h_);
            h_ = o.h_;
            o.h_ = nullptr;
        }
        return *this;
    }
    ~GdiObject() { if (h_) DeleteObject(h_); }
    H get() const { return h_; }
    explicit operator bool() const { return h_ != nullptr; }
    // Hands the object over to a new owner (a caller, or a window taking its region).
    H release() { H h = h_; h_ = nullptr; return h; }

private:
    H h_ = nullptr;
};

using Pen = GdiObject<HPEN>;
using Brush = GdiObject<HBRUSH>;
using Bitmap = GdiObject<HBITMAP>;

// Selects an object into a device context for one scope and puts back what was there.
class Selection {
public:
    Selection(HDC dc, HGDIOBJ obj) : dc_(dc), old_(obj ? SelectObject(dc, obj) : nullptr) {}
    Selection(const Selection&) = delete;
    Selection& operator=(const Selection&) = delete;
    ~Selection() { if (old_ && old_ != HGDI_ERROR) SelectObject(dc_, old_); }
    bool ok() const { return old_ && old_ != HGDI_ERROR; }

private:
    HDC dc_;
    HGDIOBJ old_;
};

// A memory device context of the library's own.
class MemoryDc {
public:
    explicit MemoryDc(HDC compatibleWith = nullptr) : dc_(CreateCompatibleDC(compatibleWith)) {}
    MemoryDc(const MemoryDc&) = delete;
    MemoryDc& operator=(const MemoryDc&) = delete;
    ~MemoryDc() { if (dc_) DeleteDC(dc_); }
    HDC get() const { return dc_; }

private:
    HDC dc_;
};

// A window's device context, released when it goes.
class WindowDc {
public:
    explicit WindowDc(HWND wnd) : wnd_(wnd), dc_(GetDC(wnd)) {}
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;
    ~WindowDc() { if (dc_) ReleaseDC(wnd_, dc_); }
    HDC get() const { return dc_; }

private:
    HWND wnd_;
    HDC dc_;
};

// ----------------------------------------------------------------- conversions

// Bytes of a value of type vt that a VARIANT holds in place (numbers, Booleans,
// dates, strings and interfaces by their pointer); 0 for the other types.
inline size_t scalarBytes(VARTYPE vt) {
    switch (vt) {
    case VT_I1: case VT_UI1: return 1;
    case VT_I2: case VT_UI2: case VT_BOOL: return 2;
    case VT_I4: case VT_UI4: case VT_INT: case VT_UINT: case VT_R4: case VT_ERROR: return 4;
    case VT_I8: case VT_UI8: case VT_R8: case VT_CY: case VT_DATE: return 8;
    case VT_BSTR: case VT_DISPATCH: case VT_UNKNOWN: return sizeof(void*);
    default: return 0;
    }
}

// Automation Boolean: true is -1; any non-zero value passed in counts as true.
// Null, or the marker of an optional argument left out (seen through
// by-reference Variants).
inline bool isMissing(const VARIANT* v) {
    while (v && V_VT(v) == (VT_BYREF | VT_VARIANT)) v = V_VARIANTREF(v);
    return !v || (V_VT(v) == VT_ERROR && V_ERROR(v) == DISP_E_PARAMNOTFOUND);
}

// The array a Variant holds, itself or by reference; null for none.
inline SAFEARRAY* arrayIn(const VARIANT& v) {
    if (!(V_VT(&v) & VT_ARRAY)) return nullptr;
    return (V_VT(&v) & VT_BYREF) ? (V_ARRAYREF(&v) ? *V_ARRAYREF(&v) : nullptr) : V_ARRAY(&v);
}

inline VARIANT_BOOL toVB(bool b) { return b ? VARIANT_TRUE : VARIANT_FALSE; }
inline bool fromVB(VARIANT_BOOL b) { return b != 0; }

// Double to Long as the automation runtime converts: nearest, ties to even.
// Out-of-range values saturate (callers check ranges where that matters).
inline long roundToLong(double v) {
    if (std::isnan(v)) return 0;
    if (v >= 2147483647.0) return 2147483647L;
    if (v <= -2147483648.0) return -2147483647L - 1;
    // The processor's conversion in its default mode, ties to even: nearbyint
    // costs over 100 ns a call here, and polygons round every vertex.
#if defined(__SSE2__)
    return _mm_cvtsd_si32(_mm_set_sd(v));
#else
    return static_cast<long>(std::nearbyint(v));
#endif
}

// Handles travel as Long; on 64-bit Windows they are 32-bit significant and sign-extended.
template <class H>
inline H toHandle(long v) { return reinterpret_cast<H>(static_cast<LONG_PTR>(v)); }
template <class H>
inline long fromHandle(H h) { return static_cast<long>(reinterpret_cast<LONG_PTR>(h)); }

inline RECT toWin32(const TOVA_RECT& r) { return RECT{r.Left, r.Top, r.Right, r.Bottom}; }
inline TOVA_RECT fromWin32(const RECT& r) { return TOVA_RECT{r.left, r.top, r.right, r.bottom}; }

}  // namespace tova
