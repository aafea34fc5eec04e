// What the window tests share: real top-level windows, a message pump and a
// C++ client of the subclassing engine.
#pragma once

#include "support.h"

#include <functional>
#include <string>
#include <vector>

namespace test {

// A window of a class of the test's own; its procedure logs the messages it
// gets and answers `kOwnResult` for WM_USER messages.
constexpr LRESULT kOwnResult = 4242;

class TestWindow {
public:
    TestWindow(int x = 100, int y = 100, int width = 200, int height = 150);
    ~TestWindow();
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    HWND hwnd() const { return wnd_; }
    long handle() const { return static_cast<long>(reinterpret_cast<LONG_PTR>(wnd_)); }
    // Messages its own procedure saw, in order.
    std::vector<UINT> seen;
    // Destroys the window now (the destructor then does nothing).
    void destroy();

    static LRESULT CALLBACK proc(HWND, UINT, WPARAM, LPARAM);

private:
    HWND wnd_ = nullptr;
};

// Processes messages for about `ms` milliseconds, or until `done` holds.
void pump(DWORD ms, const std::function<bool()>& done = {});

// A client of the engine written the way a C++ user writes one.
class Client : public _ISubclass {
public:
    explicit Client(MessageResponseConstants response = tovaMessageResponseConsume, LONG_PTR result = 0)
        : response(response), result(result) {}
    virtual ~Client() = default;

    MessageResponseConstants response;
    LONG_PTR result;
    // Calls seen: the message and the client's reference count during the call.
    struct Call {
        UINT message;
        WPARAM wParam;
        ULONG refsDuringCall;
    };
    std::vector<Call> calls;
    std::function<HRESULT(HWND, UINT, WPARAM, LPARAM, LONG_PTR*)> handler;
    // A log shared by several clients and windows, to see the call order.
    std::vector<std::string>* order = nullptr;
    std::string name;

    ULONG refs() const { return refs_; }

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++refs_; }
    STDMETHODIMP_(ULONG) Release() override { return --refs_; }   // lives on the stack
    STDMETHODIMP GetTypeInfoCount(UINT* n) override { *n = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP get_MessageResponse(MessageResponseConstants* pRet) override {
        *pRet = response;
        return S_OK;
    }
    STDMETHODIMP WindowProc(LONG hWnd, LONG Message, LONG_PTR wParam, LONG_PTR lParam, LONG_PTR* pRet) override;

private:
    ULONG refs_ = 1;
};

// Whether a window has a property of that name (GetPropA cannot tell 0 from absent).
bool hasProp(HWND wnd, const std::string& name);
LONG_PTR propValue(HWND wnd, const std::string& name);
// Names of all of a window's string properties.
std::vector<std::string> propNames(HWND wnd);

}  // namespace test
