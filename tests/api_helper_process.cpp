// "The other process" of the APIMethods process tests:
//   api_helper_process sleep MS CODE      sleeps, then exits with CODE
//   api_helper_process window TITLE TEXT  a titled window with an edit control
//                                         holding TEXT; exits with 9 once closed
#include <windows.h>
#include <shellapi.h>

#include <cwchar>

namespace {

LRESULT CALLBACK helperProc(HWND wnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY) {
        PostQuitMessage(9);
        return 0;
    }
    return DefWindowProcW(wnd, message, wParam, lParam);
}

int window(const wchar_t* title, const wchar_t* text) {
    WNDCLASSW wc{};
    wc.lpfnWndProc = helperProc;
    wc.hInstance = GetModuleHandleW(nullptr);
    wc.lpszClassName = L"TovaHelperWindow";
    RegisterClassW(&wc);
    HWND main = CreateWindowExW(0, wc.lpszClassName, title, WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 50, 300, 200,
                                nullptr, nullptr, wc.hInstance, nullptr);
    if (!main) return 2;
    CreateWindowExW(0, L"EDIT", text, WS_CHILD | WS_VISIBLE | WS_BORDER, 10, 10, 200, 24, main, nullptr,
                    wc.hInstance, nullptr);
    MSG m;
    // Bounded: a test that fails to close it must not leave it behind for long.
    SetTimer(main, 1, 60000, nullptr);
    while (GetMessageW(&m, nullptr, 0, 0) > 0) {
        if (m.message == WM_TIMER && m.hwnd == main) DestroyWindow(main);
        TranslateMessage(&m);
        DispatchMessageW(&m);
    }
    return static_cast<int>(m.wParam);
}

}  // namespace

int main() {
    int argc = 0;
    wchar_t** argv = CommandLineToArgvW(GetCommandLineW(), &argc);
    if (!argv || argc < 4) return 1;
    int code = 1;
    if (!wcscmp(argv[1], L"sleep")) {
        Sleep(static_cast<DWORD>(_wtoi(argv[2])));
        code = _wtoi(argv[3]);
    } else if (!wcscmp(argv[1], L"window")) {
        code = window(argv[2], argv[3]);
    }
    LocalFree(argv);
    return code;
}
