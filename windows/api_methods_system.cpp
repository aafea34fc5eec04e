// APIMethods, the system helpers: words and GUIDs, folders and version,
// screen and colours, keyboard, pointer and clipboard, environment, timing.
#include "api_methods.h"

#include "api_values.h"
#include "environment_timing.h"
#include "input_clipboard.h"
#include "screen_colours.h"
#include "system_info.h"
#include "system_version.h"
#include "words_guids.h"
#include "../files/file_info.h"

#include <cstring>

namespace tova {

using apiValues::answer;
using apiValues::text;
using apiValues::toRecord;

// ------------------------------------------------------------ words and numbers

STDMETHODIMP APIMethods::HiWord(LONG_PTR Value, VARIANT_BOOL Signed, LONG* pRet) {
    return api([&] { *required(pRet) = words::hiWord(Value, fromVB(Signed)); });
}
STDMETHODIMP APIMethods::LoWord(LONG_PTR Value, VARIANT_BOOL Signed, LONG* pRet) {
    return api([&] { *required(pRet) = words::loWord(Value, fromVB(Signed)); });
}
STDMETHODIMP APIMethods::MakeLong(LONG Low, LONG High, LONG* pRet) {
    return api([&] { *required(pRet) = words::makeLong(Low, High); });
}
STDMETHODIMP APIMethods::HiByte(LONG_PTR Value, LONG* pRet) {
    return api([&] { *required(pRet) = words::hiByte(Value); });
}
STDMETHODIMP APIMethods::LoByte(LONG_PTR Value, LONG* pRet) {
    return api([&] { *required(pRet) = words::loByte(Value); });
}
STDMETHODIMP APIMethods::LongToUnsigned(LONG Value, DOUBLE* pRet) {
    return api([&] { *required(pRet) = words::longToUnsigned(Value); });
}
STDMETHODIMP APIMethods::UnsignedToLong(DOUBLE Value, LONG* pRet) {
    return api([&] { *required(pRet) = words::unsignedToLong(Value); });
}
STDMETHODIMP APIMethods::IntegerToUnsigned(SHORT Value, LONG* pRet) {
    return api([&] { *required(pRet) = words::integerToUnsigned(Value); });
}
STDMETHODIMP APIMethods::UnsignedToInteger(LONG Value, SHORT* pRet) {
    return api([&] { *required(pRet) = words::unsignedToInteger(Value); });
}
STDMETHODIMP APIMethods::ShiftLeft(LONG Value, LONG Bits, LONG* pRet) {
    return api([&] { *required(pRet) = words::shiftLeft(Value, Bits); });
}
STDMETHODIMP APIMethods::ShiftRight(LONG Value, LONG Bits, VARIANT_BOOL Arithmetic, LONG* pRet) {
    return api([&] { *required(pRet) = words::shiftRight(Value, Bits, fromVB(Arithmetic)); });
}

// ------------------------------------------------------------------- GUIDs

STDMETHODIMP APIMethods::CreateGUID(VARIANT_BOOL Braces, BSTR* pRet) {
    return api([&] { answer(pRet, guids::create(fromVB(Braces))); });
}
STDMETHODIMP APIMethods::IsGUID(BSTR Text, VARIANT_BOOL* pRet) {
    return api([&] {
        GUID g;
        answer(pRet, guids::parse(text(Text), g));
    });
}
STDMETHODIMP APIMethods::GUIDToBytes(BSTR Text, VARIANT* pRet) {
    return api([&] {
        VariantInit(required(pRet));
        GUID g;
        if (!guids::parse(text(Text), g)) return lastError::set(ERROR_INVALID_DATA);
        SafeArray bytes(SafeArrayCreateVector(VT_UI1, 0, 16));
        ArrayData data(bytes.get());
        if (!data.locked()) raise(kOutOfMemory);
        std::memcpy(data.data(), &g, 16);
        V_VT(pRet) = VT_ARRAY | VT_UI1;
        V_ARRAY(pRet) = bytes.detach();
    });
}
STDMETHODIMP APIMethods::BytesToGUID(VARIANT Bytes, VARIANT_BOOL Braces, BSTR* pRet) {
    return api([&] {
        GUID g;
        answer(pRet, guids::fromBytes(Bytes, g) ? guids::format(g, fromVB(Braces)) : (lastError::set(ERROR_INVALID_DATA), L""));
    });
}

// ----------------------------------------------------------------- folders

STDMETHODIMP APIMethods::GetWindowsFolder(BSTR* pRet) {
    return api([&] { answer(pRet, systemInfo::windowsFolder()); });
}
STDMETHODIMP APIMethods::GetSystemFolder(BSTR* pRet) {
    return api([&] { answer(pRet, systemInfo::systemFolder()); });
}
STDMETHODIMP APIMethods::GetSystemWow64Folder(BSTR* pRet) {
    return api([&] { answer(pRet, systemInfo::systemWow64Folder()); });
}
STDMETHODIMP APIMethods::GetTempFolder(BSTR* pRet) {
    return api([&] {
        const std::wstring path = files::tempFolder();
        if (path.empty()) lastError::failed();
        answer(pRet, path);
    });
}
STDMETHODIMP APIMethods::GetSpecialFolder(SpecialFolderConstants Folder, VARIANT_BOOL Create, BSTR* pRet) {
    return api([&] { answer(pRet, systemInfo::specialFolder(Folder, fromVB(Create))); });
}
STDMETHODIMP APIMethods::GetKnownFolder(BSTR FolderID, VARIANT_BOOL Create, BSTR* pRet) {
    return api([&] { answer(pRet, systemInfo::knownFolder(text(FolderID), fromVB(Create))); });
}
STDMETHODIMP APIMethods::GetCurrentFolder(BSTR* pRet) {
    return api([&] { answer(pRet, systemInfo::currentFolder()); });
}
STDMETHODIMP APIMethods::SetCurrentFolder(BSTR Path, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, systemInfo::setCurrentFolder(text(Path))); });
}
STDMETHODIMP APIMethods::GetHostPath(BSTR* pRet) {
    return api([&] { answer(pRet, systemInfo::hostPath()); });
}

// ---------------------------------------------------- platform and version

STDMETHODIMP APIMethods::GetPlatform(SystemPlatformConstants* pRet) {
    return api([&] {
        systemInfo::TrueVersion v;
        systemInfo::trueVersion(v);
        *required(pRet) = static_cast<SystemPlatformConstants>(v.platform);
    });
}
STDMETHODIMP APIMethods::GetSystemType(SystemTypeConstants* pRet) {
    return api([&] {
        systemInfo::TrueVersion v;
        *required(pRet) = systemInfo::trueVersion(v) ? version::classify(v.platform, v.major, v.minor) : tovaOSUnknown;
    });
}
STDMETHODIMP APIMethods::GetOSVersion(LONG* Major, LONG* Minor, LONG* Build, VARIANT_BOOL* pRet) {
    return api([&] {
        required(Major), required(Minor), required(Build);
        systemInfo::TrueVersion v;
        const bool ok = systemInfo::trueVersion(v);
        if (ok) *Major = v.major, *Minor = v.minor, *Build = v.build;
        answer(pRet, ok);
    });
}
STDMETHODIMP APIMethods::GetOSVersionString(BSTR* pRet) {
    return api([&] {
        systemInfo::TrueVersion v;
        answer(pRet, systemInfo::trueVersion(v) ? systemInfo::versionString(v) : std::wstring());
    });
}
STDMETHODIMP APIMethods::IsOSVersionAtLeast(LONG Major, LONG Minor, LONG Build, VARIANT_BOOL* pRet) {
    return api([&] {
        systemInfo::TrueVersion v;
        answer(pRet, systemInfo::trueVersion(v) && systemInfo::atLeast(v, Major, Minor, Build));
    });
}
STDMETHODIMP APIMethods::Is64BitSystem(VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, systemInfo::is64BitSystem()); });
}
STDMETHODIMP APIMethods::Is64BitProcess(VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, sizeof(void*) == 8); });
}
STDMETHODIMP APIMethods::IsUserAdmin(VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, systemInfo::isUserAdmin()); });
}

// ------------------------------------------------------------------ screen

STDMETHODIMP APIMethods::GetSystemMetric(SystemMetricConstants Index, LONG* pRet) {
    return api([&] { *required(pRet) = screen::metric(Index); });
}
STDMETHODIMP APIMethods::GetScreenWidth(LONG* pRet) {
    return api([&] { *required(pRet) = screen::metric(SM_CXSCREEN); });
}
STDMETHODIMP APIMethods::GetScreenHeight(LONG* pRet) {
    return api([&] { *required(pRet) = screen::metric(SM_CYSCREEN); });
}
STDMETHODIMP APIMethods::GetVirtualScreenRect(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, toRecord(true, screen::virtualScreen(), required(pRECT))); });
}
STDMETHODIMP APIMethods::GetMonitorCount(LONG* pRet) {
    return api([&] { *required(pRet) = screen::metric(SM_CMONITORS); });
}
STDMETHODIMP APIMethods::GetMonitorRect(TOVA_RECT* pRECT, LONG hWnd, VARIANT_BOOL* pRet) {
    return api([&] {
        RECT r;
        required(pRECT);
        answer(pRet, toRecord(screen::monitorRect(toHandle<HWND>(hWnd), r), r, pRECT));
    });
}
STDMETHODIMP APIMethods::GetScreenDPI(VARIANT_BOOL Vertical, LONG* pRet) {
    return api([&] { *required(pRet) = screen::dpi(fromVB(Vertical)); });
}
STDMETHODIMP APIMethods::GetColorDepth(LONG* pRet) {
    return api([&] { *required(pRet) = screen::colorDepth(); });
}
STDMETHODIMP APIMethods::GetTwipsPerPixel(VARIANT_BOOL Vertical, FLOAT* pRet) {
    return api([&] {
        const long dpi = screen::dpi(fromVB(Vertical));
        *required(pRet) = dpi > 0 ? 1440.0f / static_cast<float>(dpi) : 0.0f;
    });
}
STDMETHODIMP APIMethods::PointsToPixels(FLOAT Points, VARIANT_BOOL Vertical, LONG hDC, LONG* pRet) {
    return api([&] { *required(pRet) = screen::pointsToPixels(Points, fromVB(Vertical), toHandle<HDC>(hDC)); });
}

// ----------------------------------------------------------------- colours

STDMETHODIMP APIMethods::TranslateColor(LONG Color, LONG hPalette, LONG* pRet) {
    return api([&] { *required(pRet) = colours::translate(Color, toHandle<HPALETTE>(hPalette)); });
}
STDMETHODIMP APIMethods::MakeColor(LONG Red, LONG Green, LONG Blue, LONG* pRet) {
    return api([&] { *required(pRet) = colours::make(Red, Green, Blue); });
}
STDMETHODIMP APIMethods::SplitColor(LONG Color, LONG* Red, LONG* Green, LONG* Blue, VARIANT_BOOL* pRet) {
    return api([&] {
        required(Red), required(Green), required(Blue);
        const long rgb = colours::translate(Color);
        if (rgb >= 0) *Red = rgb & 0xFF, *Green = (rgb >> 8) & 0xFF, *Blue = (rgb >> 16) & 0xFF;
        answer(pRet, rgb >= 0);
    });
}
STDMETHODIMP APIMethods::BlendColors(LONG Color1, LONG Color2, VARIANT Ratio, LONG* pRet) {
    return api([&] {
        double ratio = 0.5;
        if (!isMissing(&Ratio)) {
            Variant r;
            const HRESULT hr = VariantChangeType(&r, &Ratio, 0, VT_R8);
            if (FAILED(hr)) raise(hr == DISP_E_OVERFLOW ? kOverflow : kTypeMismatch);
            ratio = V_R8(&r);
        }
        *required(pRet) = colours::blend(Color1, Color2, ratio);
    });
}
STDMETHODIMP APIMethods::GetSystemColor(SystemColorConstants Index, LONG* pRet) {
    return api([&] { *required(pRet) = colours::systemColour(Index); });
}
STDMETHODIMP APIMethods::ColorToHTML(LONG Color, BSTR* pRet) {
    return api([&] { answer(pRet, colours::toHtml(Color)); });
}
STDMETHODIMP APIMethods::HTMLToColor(BSTR Text, LONG* pRet) {
    return api([&] { *required(pRet) = colours::fromHtml(text(Text)); });
}

// ----------------------------------------------------- keyboard and pointer

STDMETHODIMP APIMethods::IsKeyDown(LONG VirtualKey, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, input::isKeyDown(VirtualKey)); });
}
STDMETHODIMP APIMethods::IsKeyToggled(LONG VirtualKey, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, input::isKeyToggled(VirtualKey)); });
}
STDMETHODIMP APIMethods::IsCapsLockOn(VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, input::isKeyToggled(VK_CAPITAL)); });
}
STDMETHODIMP APIMethods::IsNumLockOn(VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, input::isKeyToggled(VK_NUMLOCK)); });
}
STDMETHODIMP APIMethods::SetKeyToggle(LONG VirtualKey, VARIANT_BOOL On, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, input::setKeyToggle(VirtualKey, fromVB(On))); });
}
STDMETHODIMP APIMethods::GetShiftState(ShiftStateConstants* pRet) {
    return api([&] { *required(pRet) = static_cast<ShiftStateConstants>(input::shiftState()); });
}
STDMETHODIMP APIMethods::GetCursorPosition(POINTAPI* pPOINT, LONG hWnd, VARIANT_BOOL* pRet) {
    return api([&] {
        required(pPOINT);
        POINT p;
        const bool ok = input::cursorPosition(toHandle<HWND>(hWnd), p);
        if (ok) pPOINT->X = p.x, pPOINT->Y = p.y;
        answer(pRet, ok);
    });
}
STDMETHODIMP APIMethods::GetCursorPosition2(LONG* X, LONG* Y, LONG hWnd, VARIANT_BOOL* pRet) {
    return api([&] {
        required(X), required(Y);
        POINT p;
        const bool ok = input::cursorPosition(toHandle<HWND>(hWnd), p);
        if (ok) *X = p.x, *Y = p.y;
        answer(pRet, ok);
    });
}
STDMETHODIMP APIMethods::SetCursorPosition(LONG X, LONG Y, LONG hWnd, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, input::setCursorPosition(toHandle<HWND>(hWnd), POINT{X, Y})); });
}

// -------------------------------------------- clipboard, names, environment

STDMETHODIMP APIMethods::GetClipboardText(BSTR* pRet) {
    return api([&] { answer(pRet, clipboard::text()); });
}
STDMETHODIMP APIMethods::SetClipboardText(BSTR Text, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, clipboard::setText(text(Text))); });
}
STDMETHODIMP APIMethods::ClearClipboard(VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, clipboard::clear()); });
}
STDMETHODIMP APIMethods::GetComputerName(ComputerNameFormatConstants Format, BSTR* pRet) {
    return api([&] { answer(pRet, environment::computerName(Format)); });
}
STDMETHODIMP APIMethods::GetUserName(BSTR* pRet) {
    return api([&] { answer(pRet, environment::userName()); });
}
STDMETHODIMP APIMethods::GetEnvironmentVariable(BSTR Name, BSTR* pRet) {
    return api([&] { answer(pRet, environment::variable(text(Name))); });
}
// Value is by reference only so that leaving it out differs from passing "".
STDMETHODIMP APIMethods::SetEnvironmentVariable(BSTR Name, BSTR* Value, VARIANT_BOOL* pRet) {
    return api([&] {
        const std::wstring value = Value ? text(*Value) : std::wstring();
        answer(pRet, environment::setVariable(text(Name), Value ? &value : nullptr));
    });
}
STDMETHODIMP APIMethods::ExpandEnvironmentStrings(BSTR Text, BSTR* pRet) {
    return api([&] { answer(pRet, environment::expand(text(Text))); });
}
STDMETHODIMP APIMethods::GetEnvironmentVariables(VARIANT* pRet) {
    return api([&] {
        VariantInit(required(pRet));
        const auto all = environment::variables();
        SAFEARRAYBOUND bounds[2] = {{2, 0}, {static_cast<ULONG>(all.size()), 0}};
        SafeArray table(SafeArrayCreate(VT_VARIANT, 2, bounds));
        if (!table.get()) raise(kOutOfMemory);
        for (size_t i = 0; i < all.size(); ++i) {
            for (LONG column = 0; column < 2; ++column) {
                LONG index[2] = {column, static_cast<LONG>(i)};
                Variant v(column == 0 ? all[i].first.c_str() : all[i].second.c_str());
                if (FAILED(SafeArrayPutElement(table.get(), index, &v))) raise(kOutOfMemory);
            }
        }
        V_VT(pRet) = VT_ARRAY | VT_VARIANT;
        V_ARRAY(pRet) = table.detach();
    });
}

// --------------------------------------------------- timing, sound, errors

STDMETHODIMP APIMethods::GetTickCount(DOUBLE* pRet) {
    return api([&] { *required(pRet) = timing::tickCount(); });
}
STDMETHODIMP APIMethods::GetPerformanceCounter(DOUBLE* pRet) {
    return api([&] { *required(pRet) = timing::performanceCounter(); });
}
STDMETHODIMP APIMethods::GetPerformanceFrequency(DOUBLE* pRet) {
    return api([&] { *required(pRet) = timing::performanceFrequency(); });
}
STDMETHODIMP APIMethods::Beep(LONG Frequency, LONG Duration, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, timing::beep(Frequency, Duration)); });
}
STDMETHODIMP APIMethods::MessageBeep(MessageBeepConstants SoundType, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, timing::messageBeep(SoundType)); });
}
STDMETHODIMP APIMethods::GetErrorText(LONG ErrorCode, LONG LanguageID, BSTR* pRet) {
    return api([&] { answer(pRet, timing::errorText(ErrorCode, LanguageID)); });
}
// The one member that leaves LastDllError as it is.
STDMETHODIMP APIMethods::get_LastDllError(LONG* pRet) {
    return guard([&] { *required(pRet) = static_cast<LONG>(lastError::get()); });
}

}  // namespace tova
