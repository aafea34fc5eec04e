// Cost of one subclassed message round trip: SendMessage to a window whose
// message has 1 and 10 attached clients, next to the same SendMessage to the
// window without subclassing. The engine is linked in directly.
#include "windows/subclass.h"

#include "bench/clock.h"

#include <cstdio>
#include <vector>

using namespace tova;

namespace {

constexpr UINT kMsg = WM_USER + 1;

LRESULT CALLBACK plainProc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
    if (m == kMsg) return 1;
    return DefWindowProcW(w, m, wp, lp);
}

// A client that does as little as a client can.
class Client : public _ISubclass {
public:
    explicit Client(MessageResponseConstants r) : response_(r) {}
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        if (riid == IID_IUnknown || riid == IID_IDispatch || riid == IID__ISubclass) {
            *ppv = static_cast<_ISubclass*>(this);
            AddRef();
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++refs_; }
    STDMETHODIMP_(ULONG) Release() override { return --refs_; }
    STDMETHODIMP GetTypeInfoCount(UINT* n) override { *n = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP get_MessageResponse(MessageResponseConstants* r) override { *r = response_; return S_OK; }
    STDMETHODIMP WindowProc(LONG, LONG, LONG_PTR, LONG_PTR, LONG_PTR* r) override { *r = 2; return S_OK; }

private:
    MessageResponseConstants response_;
    ULONG refs_ = 1;
};

double perMessage(HWND w, int n) {
    for (int i = 0; i < 100; ++i) SendMessageW(w, kMsg, 0, 0);   // warm up
    double t0 = benchSeconds();
    for (int i = 0; i < n; ++i) SendMessageW(w, kMsg, i, 0);
    return (benchSeconds() - t0) / n;
}

}  // namespace

int main() {
    WNDCLASSW wc{};
    wc.lpfnWndProc = plainProc;
    wc.hInstance = GetModuleHandleW(nullptr);
    wc.lpszClassName = L"SubclassBench";
    RegisterClassW(&wc);
    HWND w = CreateWindowExW(0, wc.lpszClassName, L"", WS_OVERLAPPEDWINDOW, 0, 0, 100, 100, nullptr, nullptr,
                             wc.hInstance, nullptr);
    if (!w) {
        std::printf("no window\n");
        return 1;
    }
    // Under Wine each window-property read is a round trip to the wine
    // server: the subclassed cases take far fewer messages to the same time.
    constexpr int kPlain = 200000, kN = 5000;
    std::printf("SendMessage round trip (%d / %d messages, per message):\n", kPlain, kN);
    const double plain = perMessage(w, kPlain);
    std::printf("  not subclassed                        %8.0f ns\n", plain * 1e9);
    const double prop = [&] {
        SetPropA(w, "bench", reinterpret_cast<HANDLE>(1));
        double t0 = benchSeconds();
        for (int i = 0; i < kN; ++i) GetPropA(w, "bench");
        double t = (benchSeconds() - t0) / kN;
        RemovePropA(w, "bench");
        return t;
    }();
    std::printf("  (one GetPropA alone                   %8.0f ns)\n", prop * 1e9);

    std::vector<Client> clients(10, Client(tovaMessageResponseConsume));
    subclass::attach(&clients[0], w, kMsg);
    const double other = [&] {
        // A message of the subclassed window that no client asked for.
        for (int i = 0; i < 100; ++i) SendMessageW(w, kMsg + 1, 0, 0);
        double t0 = benchSeconds();
        for (int i = 0; i < kN; ++i) SendMessageW(w, kMsg + 1, i, 0);
        return (benchSeconds() - t0) / kN;
    }();
    const double one = perMessage(w, kN);
    for (int i = 1; i < 10; ++i) subclass::attach(&clients[i], w, kMsg);
    const double ten = perMessage(w, kN);
    for (auto& c : clients) subclass::detach(&c, w, kMsg);

    Client post(tovaMessageResponsePostProcess);
    subclass::attach(&post, w, kMsg);
    const double onePost = perMessage(w, kN);
    subclass::detach(&post, w, kMsg);

    std::printf("  subclassed, message without clients   %8.0f ns  (+%.0f ns)\n", other * 1e9, (other - plain) * 1e9);
    std::printf("  1 client (consume)                    %8.0f ns  (+%.0f ns)\n", one * 1e9, (one - plain) * 1e9);
    std::printf("  1 client (post-process)               %8.0f ns  (+%.0f ns)\n", onePost * 1e9,
                (onePost - plain) * 1e9);
    std::printf("  10 clients (consume)                  %8.0f ns  (+%.0f ns, %.0f ns per client)\n", ten * 1e9,
                (ten - plain) * 1e9, (ten - plain) * 1e9 / 10);
    DestroyWindow(w);
    return 0;
}
