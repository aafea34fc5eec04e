#include "window_support.h"

namespace test {

namespace {

const wchar_t kClassName[] = L"TovaTestWindow";

void registerClass() {
    static bool done = false;
    if (done) return;
    WNDCLASSW wc{};
    wc.lpfnWndProc = &TestWindow::proc;
    wc.hInstance = GetModuleHandleW(nullptr);
    wc.lpszClassName = kClassName;
    wc.hCursor = LoadCursor(nullptr, IDC_ARROW);
    RegisterClassW(&wc);
    done = true;
}

BOOL CALLBACK collectProp(HWND, LPSTR name, HANDLE, ULONG_PTR param) {
    // Atoms without a string name come as small numbers.
    if (reinterpret_cast<ULONG_PTR>(name) > 0xFFFF)
        reinterpret_cast<std::vector<std::string>*>(param)->push_back(name);
    return TRUE;
}

}  // namespace

TestWindow::TestWindow(int x, int y, int width, int height) {
    registerClass();
    wnd_ = CreateWindowExW(0, kClassName, L"test", WS_OVERLAPPEDWINDOW | WS_VISIBLE, x, y, width, height, nullptr,
                           nullptr, GetModuleHandleW(nullptr), this);
    if (wnd_) SetWindowLongPtrW(wnd_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

TestWindow::~TestWindow() { destroy(); }

void TestWindow::destroy() {
    if (wnd_) {
        SetWindowLongPtrW(wnd_, GWLP_USERDATA, 0);
        DestroyWindow(wnd_);
        wnd_ = nullptr;
    }
}

LRESULT CALLBACK TestWindow::proc(HWND wnd, UINT msg, WPARAM w, LPARAM l) {
    auto* self = reinterpret_cast<TestWindow*>(GetWindowLongPtrW(wnd, GWLP_USERDATA));
    if (self) self->seen.push_back(msg);
    if (msg >= WM_USER && msg < WM_APP) return kOwnResult;
    return DefWindowProcW(wnd, msg, w, l);
}

void pump(DWORD ms, const std::function<bool()>& done) {
    const DWORD start = GetTickCount();
    MSG m;
    while (GetTickCount() - start < ms) {
        // Bounded: with many timers the queue is never empty.
        while (GetTickCount() - start < ms && PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&m);
            DispatchMessageW(&m);
        }
        if (done && done()) return;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_ALLINPUT);
    }
}

STDMETHODIMP Client::QueryInterface(REFIID riid, void** ppv) {
    if (riid == IID_IUnknown || riid == IID_IDispatch || riid == IID__ISubclass) {
        *ppv = static_cast<_ISubclass*>(this);
        AddRef();
        return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP Client::WindowProc(LONG hWnd, LONG Message, LONG_PTR wParam, LONG_PTR lParam, LONG_PTR* pRet) {
    calls.push_back({static_cast<UINT>(Message), static_cast<WPARAM>(wParam), refs_});
    if (order) order->push_back(name);
    if (handler)
        return handler(reinterpret_cast<HWND>(static_cast<LONG_PTR>(hWnd)), static_cast<UINT>(Message),
                       static_cast<WPARAM>(wParam), lParam, pRet);
    *pRet = result;
    return S_OK;
}

bool hasProp(HWND wnd, const std::string& name) {
    for (const std::string& n : propNames(wnd))
        if (n == name) return true;
    return false;
}

LONG_PTR propValue(HWND wnd, const std::string& name) {
    return reinterpret_cast<LONG_PTR>(GetPropA(wnd, name.c_str()));
}

std::vector<std::string> propNames(HWND wnd) {
    std::vector<std::string> names;
    EnumPropsExA(wnd, &collectProp, reinterpret_cast<LPARAM>(&names));
    return names;
}

}  // namespace test
