// APIMethods' common dialogs under Wine's null driver. No person answers
// them: a thread timer, which the dialog's own loop dispatches, finds the
// dialog among the thread's windows (#32770, owned by the test window), notes
// that the owner is disabled and the caption, then acts and presses a button.
// Every dialog is closed after 5 s whatever happens, so a failing test ends.
#include "api_support.h"
#include "window_support.h"

#include <commdlg.h>
#include <dlgs.h>
#include <olectl.h>

#include <fstream>

using namespace test;

namespace {

// Drives the one dialog a call opens: `act` is called once with it, and then
// `button` is pressed.
class Driver {
public:
    Driver(HWND owner, int button, std::function<void(HWND)> act = {})
        : owner_(owner), button_(button), act_(std::move(act)) {
        current_ = this;
        timer_ = SetTimer(nullptr, 0, 50, tick);
    }
    ~Driver() {
        KillTimer(nullptr, timer_);
        current_ = nullptr;
    }
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    bool found = false, ownerWasDisabled = false, timedOut = false;
    std::wstring caption;

private:
    static BOOL CALLBACK collect(HWND wnd, LPARAM data) {
        auto* d = reinterpret_cast<Driver*>(data);
        wchar_t cls[16] = {};
        GetClassNameW(wnd, cls, 16);
        if (IsWindowVisible(wnd) && !lstrcmpW(cls, L"#32770") && GetWindow(wnd, GW_OWNER) == d->owner_) {
            d->dialog_ = wnd;
            return FALSE;
        }
        return TRUE;
    }
    static BOOL CALLBACK closeAll(HWND wnd, LPARAM data) {
        if (wnd != reinterpret_cast<HWND>(data) && IsWindowVisible(wnd)) PostMessageW(wnd, WM_CLOSE, 0, 0);
        return TRUE;
    }
    static void CALLBACK tick(HWND, UINT, UINT_PTR, DWORD) {
        Driver* d = current_;
        if (!d) return;
        if (++d->ticks_ > 100) {   // 5 s: give up, close whatever is open
            d->timedOut = true;
            EnumThreadWindows(GetCurrentThreadId(), closeAll, reinterpret_cast<LPARAM>(d->owner_));
            return;
        }
        if (d->found) return;
        d->dialog_ = nullptr;
        EnumThreadWindows(GetCurrentThreadId(), collect, reinterpret_cast<LPARAM>(d));
        if (!d->dialog_) return;
        d->found = true;
        d->ownerWasDisabled = !IsWindowEnabled(d->owner_);
        wchar_t text[256] = {};
        GetWindowTextW(d->dialog_, text, 256);
        d->caption = text;
        if (d->act_) d->act_(d->dialog_);
        PostMessageW(d->dialog_, WM_COMMAND, MAKEWPARAM(d->button_, BN_CLICKED), 0);
    }

    static Driver* current_;
    HWND owner_;
    int button_;
    std::function<void(HWND)> act_;
    UINT_PTR timer_ = 0;
    HWND dialog_ = nullptr;
    int ticks_ = 0;
};
Driver* Driver::current_ = nullptr;

// Types into the file name box of the Explorer-style dialog.
std::function<void(HWND)> typeName(const std::wstring& name) {
    return [name](HWND dialog) { SendMessageW(dialog, CDM_SETCONTROLTEXT, cmb13, reinterpret_cast<LPARAM>(name.c_str())); };
}

void expectModal(const Driver& d) {
    EXPECT_TRUE(d.found);
    EXPECT_TRUE(d.ownerWasDisabled) << "modal to its owner";
    EXPECT_FALSE(d.timedOut);
}

class ApiDialogs : public ::testing::Test {
protected:
    ComPtr<_APIMethods> a = api();
    TestWindow owner;
    Scratch dir;
    LONG hOwner() const { return owner.handle(); }
    Bstr file(const std::wstring& name) {
        std::ofstream(dir(name).c_str()) << "x";
        return Bstr(dir(name));
    }
};

const Bstr kFilter(L"Text|*.txt|All|*.*");

TEST_F(ApiDialogs, OpenGivesThePathAndFilterOrNothingOnCancel) {
    const Bstr path = file(L"Grüße Ω.txt");
    LONG index = 2;
    Bstr result;
    {
        Driver d(owner.hwnd(), IDOK, typeName(path.str()));
        ASSERT_EQ(S_OK, a->GetOpenFileName(kFilter.get(), Bstr(dir.root()).get(), Bstr(L"Öffnen Ω").get(), hOwner(), nullptr,
                                           nullptr, static_cast<FileDialogConstants>(4108), &index, result.put()));
        expectModal(d);
        EXPECT_EQ(L"Öffnen Ω", d.caption);
    }
    EXPECT_EQ(path.str(), result.str());
    EXPECT_EQ(2, index);
    EXPECT_EQ(0, lastDllError(a.get()));
    {
        Driver d(owner.hwnd(), IDCANCEL);
        a->GetOpenFileName(kFilter.get(), Bstr(dir.root()).get(), nullptr, hOwner(), nullptr, nullptr,
                           static_cast<FileDialogConstants>(4108), &index, result.put());
        expectModal(d);
    }
    EXPECT_EQ(L"", result.str());
    EXPECT_EQ(0, lastDllError(a.get())) << "Cancel is no failure";
    EXPECT_TRUE(IsWindowEnabled(owner.hwnd()));
}

TEST_F(ApiDialogs, OpenManyGivesFullPathsAndSaveAddsTheExtension) {
    const Bstr first = file(L"a.txt"), second = file(L"b.txt");
    LONG index = 1;
    Variant list;
    {
        Driver d(owner.hwnd(), IDOK, typeName(L"\"a.txt\" \"b.txt\""));
        ASSERT_EQ(S_OK, a->GetOpenFileNames(kFilter.get(), Bstr(dir.root()).get(), nullptr, hOwner(), nullptr, nullptr,
                                            static_cast<FileDialogConstants>(4108), &index, list.put()));
        expectModal(d);
    }
    ASSERT_EQ(VT_ARRAY | VT_VARIANT, V_VT(&list));
    EXPECT_EQ((std::vector<std::wstring>{first.str(), second.str()}), strings(list));
    {
        Driver d(owner.hwnd(), IDCANCEL);
        a->GetOpenFileNames(kFilter.get(), Bstr(dir.root()).get(), nullptr, hOwner(), nullptr, nullptr,
                            static_cast<FileDialogConstants>(4108), &index, list.put());
    }
    EXPECT_EQ(VT_EMPTY, V_VT(&list));

    Bstr saved;
    {
        Driver d(owner.hwnd(), IDOK, typeName(L"name"));
        ASSERT_EQ(S_OK, a->GetSaveFileName(kFilter.get(), Bstr(dir.root()).get(), nullptr, hOwner(), nullptr,
                                           Bstr(L"txt").get(), static_cast<FileDialogConstants>(2062), &index, saved.put()));
        expectModal(d);
    }
    EXPECT_EQ(dir(L"name.txt"), saved.str());
}

TEST_F(ApiDialogs, BadArgumentsFailBeforeAnyDialogOpens) {
    Driver d(owner.hwnd(), IDCANCEL);   // closes one should it open after all
    LONG index = 1, color = 0;
    Bstr result;
    EXPECT_EQ(5, errorNumber(a->GetOpenFileName(Bstr(L"Text|*.txt|All").get(), nullptr, nullptr, hOwner(), nullptr,
                                                nullptr, static_cast<FileDialogConstants>(4108), &index, result.put())));
    TestWindow gone;
    const LONG dead = gone.handle();
    gone.destroy();
    ASSERT_EQ(S_OK, a->GetSaveFileName(nullptr, nullptr, nullptr, dead, nullptr, nullptr,
                                       static_cast<FileDialogConstants>(2062), &index, result.put()));
    EXPECT_EQ(L"", result.str());
    EXPECT_EQ(1400, lastDllError(a.get()));
    ASSERT_EQ(S_OK, a->ChooseColor(0, dead, VARIANT_FALSE, &color));
    EXPECT_EQ(-1, color);
    EXPECT_EQ(1400, lastDllError(a.get()));
    VARIANT_BOOL ok;
    EXPECT_EQ(91, errorNumber(a->ChooseFont(nullptr, hOwner(), &color, &ok)));
    EXPECT_FALSE(d.found);
}

TEST_F(ApiDialogs, BrowseForFolderStartsAtTheInitialFolder) {
    Bstr result;
    {
        Driver d(owner.hwnd(), IDOK);
        ASSERT_EQ(S_OK, a->BrowseForFolder(Bstr(L"Pick one").get(), Bstr(dir.root()).get(), hOwner(),
                                           static_cast<BrowseFolderConstants>(65), Bstr(L"Ordner Ω").get(), result.put()));
        expectModal(d);
        EXPECT_EQ(L"Ordner Ω", d.caption);
    }
    EXPECT_EQ(dir.root(), result.str());
    {
        Driver d(owner.hwnd(), IDCANCEL);
        a->BrowseForFolder(nullptr, Bstr(dir.root()).get(), hOwner(), static_cast<BrowseFolderConstants>(1), nullptr,
                           result.put());
        expectModal(d);
    }
    EXPECT_EQ(L"", result.str());
    EXPECT_EQ(0, lastDllError(a.get()));
}

TEST_F(ApiDialogs, ChooseColorGivesTheColourOrMinusOne) {
    LONG color = 0;
    {
        Driver d(owner.hwnd(), IDOK);
        ASSERT_EQ(S_OK, a->ChooseColor(0x1E140A, hOwner(), VARIANT_TRUE, &color));
        expectModal(d);
    }
    EXPECT_EQ(0x1E140A, color);
    {
        Driver d(owner.hwnd(), IDOK);
        a->ChooseColor(static_cast<LONG>(0x80000000 | COLOR_WINDOW), hOwner(), VARIANT_FALSE, &color);
    }
    EXPECT_EQ(static_cast<LONG>(GetSysColor(COLOR_WINDOW)), color) << "a system colour starts as its RGB";
    {
        Driver d(owner.hwnd(), IDCANCEL);
        a->ChooseColor(0x1E140A, hOwner(), VARIANT_FALSE, &color);
    }
    EXPECT_EQ(-1, color);
    EXPECT_EQ(0, lastDllError(a.get()));
}

int CALLBACK firstTrueType(const LOGFONTW* lf, const TEXTMETRICW*, DWORD type, LPARAM data) {
    if (!(type & TRUETYPE_FONTTYPE) || lf->lfFaceName[0] == L'@') return 1;
    *reinterpret_cast<std::wstring*>(data) = lf->lfFaceName;
    return 0;
}

TEST_F(ApiDialogs, ChooseFontKeepsTheFontOnOkAndLeavesItOnCancel) {
    // A face the system has (Wine offers the host's fonts).
    std::wstring face;
    HDC screen = GetDC(nullptr);
    LOGFONTW all{};
    all.lfCharSet = DEFAULT_CHARSET;
    EnumFontFamiliesExW(screen, &all, firstTrueType, reinterpret_cast<LPARAM>(&face), 0);
    ReleaseDC(nullptr, screen);
    ASSERT_FALSE(face.empty());
    Bstr name(face);
    FONTDESC desc{sizeof desc, name.get(), {}, FW_BOLD, DEFAULT_CHARSET, FALSE, FALSE, FALSE};
    desc.cySize.int64 = 120000;   // 12 points
    ComPtr<IFontDisp> font;
    ASSERT_EQ(S_OK, OleCreateFontIndirect(&desc, IID_IFontDisp, font.putVoid()));
    ComPtr<IFont> f = font.as<IFont>(IID_IFont);

    LONG color = 0xFF;
    VARIANT_BOOL ok = VARIANT_FALSE;
    {
        Driver d(owner.hwnd(), IDOK);
        ASSERT_EQ(S_OK, a->ChooseFont(font.get(), hOwner(), &color, &ok));
        expectModal(d);
    }
    EXPECT_TRUE(ok);
    Bstr after;
    f->get_Name(after.put());
    EXPECT_EQ(face, after.str());
    CY size{};
    f->get_Size(&size);
    EXPECT_NEAR(12.0, size.int64 / 10000.0, 1.0);
    BOOL bold = FALSE;
    f->get_Bold(&bold);
    EXPECT_TRUE(bold);
    EXPECT_EQ(0xFF, color);

    size.int64 = 200000;
    f->put_Size(size);
    f->get_Size(&size);   // as the font object realises it (Wine: 20.25)
    const LONGLONG before = size.int64;
    {
        Driver d(owner.hwnd(), IDCANCEL);
        a->ChooseFont(font.get(), hOwner(), &color, &ok);
    }
    EXPECT_FALSE(ok);
    EXPECT_EQ(0, lastDllError(a.get()));
    f->get_Size(&size);
    EXPECT_EQ(before, size.int64) << "Cancel leaves the font";
}

}  // namespace
