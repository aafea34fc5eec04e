// APIMethods: global operating-system helpers for hosts that cannot declare
// Win32 functions: the drawing routines the geometry classes delegate to,
// words and GUIDs, folders and version, screen and colours, keyboard, pointer
// and clipboard, environment and timing. Soft failures are results; the
// calling thread's LastDllError tells why.
#pragma once

#include "../frame/library_frame.h"
#include "last_error.h"

#include <utility>

namespace tova {

class APIMethods final : public Object<APIMethods, _APIMethods> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP DrawEdge(LONG hDC, TOVA_RECT* pRECT, EdgeStyleConstants EdgeStyle, EdgeModeConstants EdgeMode,
                          LONG* pRet) override;
    STDMETHODIMP DrawText(LONG hDC, BSTR* Text, TOVA_RECT* pRECT, DrawTextFormatConstants wFormat, LONG* pRet) override;
    STDMETHODIMP DrawGradient(LONG hDC, LONG* Left, LONG* Top, LONG* Right, LONG* Bottom, LONG StartColor,
                              LONG EndColor, VARIANT_BOOL Vertical, VARIANT_BOOL* pRet) override;
    STDMETHODIMP HiWord(LONG_PTR Value, VARIANT_BOOL Signed, LONG* pRet) override;
    STDMETHODIMP LoWord(LONG_PTR Value, VARIANT_BOOL Signed, LONG* pRet) override;
    STDMETHODIMP MakeLong(LONG Low, LONG High, LONG* pRet) override;
    STDMETHODIMP HiByte(LONG_PTR Value, LONG* pRet) override;
    STDMETHODIMP LoByte(LONG_PTR Value, LONG* pRet) override;
    STDMETHODIMP LongToUnsigned(LONG Value, DOUBLE* pRet) override;
    STDMETHODIMP UnsignedToLong(DOUBLE Value, LONG* pRet) override;
    STDMETHODIMP IntegerToUnsigned(SHORT Value, LONG* pRet) override;
    STDMETHODIMP UnsignedToInteger(LONG Value, SHORT* pRet) override;
    STDMETHODIMP ShiftLeft(LONG Value, LONG Bits, LONG* pRet) override;
    STDMETHODIMP ShiftRight(LONG Value, LONG Bits, VARIANT_BOOL Arithmetic, LONG* pRet) override;
    STDMETHODIMP CreateGUID(VARIANT_BOOL Braces, BSTR* pRet) override;
    STDMETHODIMP IsGUID(BSTR Text, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GUIDToBytes(BSTR Text, VARIANT* pRet) override;
    STDMETHODIMP BytesToGUID(VARIANT Bytes, VARIANT_BOOL Braces, BSTR* pRet) override;
    STDMETHODIMP GetWindowsFolder(BSTR* pRet) override;
    STDMETHODIMP GetSystemFolder(BSTR* pRet) override;
    STDMETHODIMP GetSystemWow64Folder(BSTR* pRet) override;
    STDMETHODIMP GetTempFolder(BSTR* pRet) override;
    STDMETHODIMP GetSpecialFolder(SpecialFolderConstants Folder, VARIANT_BOOL Create, BSTR* pRet) override;
    STDMETHODIMP GetKnownFolder(BSTR FolderID, VARIANT_BOOL Create, BSTR* pRet) override;
    STDMETHODIMP GetCurrentFolder(BSTR* pRet) override;
    STDMETHODIMP SetCurrentFolder(BSTR Path, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetHostPath(BSTR* pRet) override;
    STDMETHODIMP GetPlatform(SystemPlatformConstants* pRet) override;
    STDMETHODIMP GetSystemType(SystemTypeConstants* pRet) override;
    STDMETHODIMP GetOSVersion(LONG* Major, LONG* Minor, LONG* Build, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetOSVersionString(BSTR* pRet) override;
    STDMETHODIMP IsOSVersionAtLeast(LONG Major, LONG Minor, LONG Build, VARIANT_BOOL* pRet) override;
    STDMETHODIMP Is64BitSystem(VARIANT_BOOL* pRet) override;
    STDMETHODIMP Is64BitProcess(VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsUserAdmin(VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetSystemMetric(SystemMetricConstants Index, LONG* pRet) override;
    STDMETHODIMP GetScreenWidth(LONG* pRet) override;
    STDMETHODIMP GetScreenHeight(LONG* pRet) override;
    STDMETHODIMP GetVirtualScreenRect(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetMonitorCount(LONG* pRet) override;
    STDMETHODIMP GetMonitorRect(TOVA_RECT* pRECT, LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetScreenDPI(VARIANT_BOOL Vertical, LONG* pRet) override;
    STDMETHODIMP GetColorDepth(LONG* pRet) override;
    STDMETHODIMP GetTwipsPerPixel(VARIANT_BOOL Vertical, FLOAT* pRet) override;
    STDMETHODIMP PointsToPixels(FLOAT Points, VARIANT_BOOL Vertical, LONG hDC, LONG* pRet) override;
    // Ids 46 to 126: windows, shell, dialogs, fonts.
    STDMETHODIMP TranslateColor(LONG Color, LONG hPalette, LONG* pRet) override;
    STDMETHODIMP MakeColor(LONG Red, LONG Green, LONG Blue, LONG* pRet) override;
    STDMETHODIMP SplitColor(LONG Color, LONG* Red, LONG* Green, LONG* Blue, VARIANT_BOOL* pRet) override;
    STDMETHODIMP BlendColors(LONG Color1, LONG Color2, VARIANT Ratio, LONG* pRet) override;
    STDMETHODIMP GetSystemColor(SystemColorConstants Index, LONG* pRet) override;
    STDMETHODIMP ColorToHTML(LONG Color, BSTR* pRet) override;
    STDMETHODIMP HTMLToColor(BSTR Text, LONG* pRet) override;
    STDMETHODIMP IsKeyDown(LONG VirtualKey, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsKeyToggled(LONG VirtualKey, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsCapsLockOn(VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsNumLockOn(VARIANT_BOOL* pRet) override;
    STDMETHODIMP SetKeyToggle(LONG VirtualKey, VARIANT_BOOL On, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetShiftState(ShiftStateConstants* pRet) override;
    STDMETHODIMP GetCursorPosition(POINTAPI* pPOINT, LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetCursorPosition2(LONG* X, LONG* Y, LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP SetCursorPosition(LONG X, LONG Y, LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetClipboardText(BSTR* pRet) override;
    STDMETHODIMP SetClipboardText(BSTR Text, VARIANT_BOOL* pRet) override;
    STDMETHODIMP ClearClipboard(VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetComputerName(ComputerNameFormatConstants Format, BSTR* pRet) override;
    STDMETHODIMP GetUserName(BSTR* pRet) override;
    STDMETHODIMP GetEnvironmentVariable(BSTR Name, BSTR* pRet) override;
    STDMETHODIMP SetEnvironmentVariable(BSTR Name, BSTR* Value, VARIANT_BOOL* pRet) override;
    STDMETHODIMP ExpandEnvironmentStrings(BSTR Text, BSTR* pRet) override;
    STDMETHODIMP GetEnvironmentVariables(VARIANT* pRet) override;
    STDMETHODIMP GetTickCount(DOUBLE* pRet) override;
    STDMETHODIMP GetPerformanceCounter(DOUBLE* pRet) override;
    STDMETHODIMP GetPerformanceFrequency(DOUBLE* pRet) override;
    STDMETHODIMP Beep(LONG Frequency, LONG Duration, VARIANT_BOOL* pRet) override;
    STDMETHODIMP MessageBeep(MessageBeepConstants SoundType, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetErrorText(LONG ErrorCode, LONG LanguageID, BSTR* pRet) override;
    STDMETHODIMP get_LastDllError(LONG* pRet) override;

private:
    friend class Object<APIMethods, _APIMethods>;
    APIMethods() = default;

    // Runs a member: LastDllError is cleared first and holds the code of a
    // soft failure the member meets.
    template <class F>
    static HRESULT api(F&& body) noexcept {
        lastError::clear();
        return guard(std::forward<F>(body));
    }
};

}  // namespace tova
