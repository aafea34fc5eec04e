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
    STDMETHODIMP GetWindowRect(LONG hWnd, TOVA_RECT* pRECT, VARIANT_BOOL RelativeToParent, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetWindowRect3(LONG hWnd, LONG* Left, LONG* Top, LONG* Width, LONG* Height, VARIANT_BOOL RelativeToParent, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetClientRect(LONG hWnd, TOVA_RECT* pRECT, VARIANT_BOOL ScreenCoordinates, VARIANT_BOOL* pRet) override;
    STDMETHODIMP MoveWindow(LONG hWnd, TOVA_RECT* pRECT, VARIANT_BOOL Repaint, VARIANT_BOOL* pRet) override;
    STDMETHODIMP MoveWindow3(LONG hWnd, LONG Left, LONG Top, LONG Width, LONG Height, VARIANT_BOOL Repaint, VARIANT_BOOL* pRet) override;
    STDMETHODIMP MoveWindow4(LONG hWnd, _Rectangle* Rectangle, VARIANT_BOOL Repaint, VARIANT_BOOL* pRet) override;
    STDMETHODIMP SetWindowPosition(LONG hWnd, LONG Left, LONG Top, VARIANT_BOOL* pRet) override;
    STDMETHODIMP SetWindowSize(LONG hWnd, LONG Width, LONG Height, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetRestoredRect(LONG hWnd, TOVA_RECT* pRECT, VARIANT_BOOL* pRet) override;
    STDMETHODIMP SetRestoredRect(LONG hWnd, TOVA_RECT* pRECT, VARIANT_BOOL* pRet) override;
    STDMETHODIMP CentreWindowOnScreen(LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP CentreWindowOnOwner(LONG hWnd, LONG hWndOwner, VARIANT_BOOL* pRet) override;
    STDMETHODIMP SetAlwaysOnTop(LONG hWnd, VARIANT_BOOL OnTop, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsAlwaysOnTop(LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP FlashWindow(LONG hWnd, FlashWindowConstants Flags, LONG Count, LONG Interval, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetShowState(LONG hWnd, ShowWindowConstants* pRet) override;
    STDMETHODIMP SetShowState(LONG hWnd, ShowWindowConstants ShowCmd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP SetWindowOpacity(LONG hWnd, BYTE Opacity, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetWindowOpacity(LONG hWnd, LONG* pRet) override;
    STDMETHODIMP ScreenToClient(LONG hWnd, POINTAPI* pPOINT, VARIANT_BOOL* pRet) override;
    STDMETHODIMP ClientToScreen(LONG hWnd, POINTAPI* pPOINT, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsWindow(LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsWindowVisible(LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsWindowEnabled(LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP EnableWindow(LONG hWnd, VARIANT_BOOL Enable, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetWindowText(LONG hWnd, BSTR* pRet) override;
    STDMETHODIMP SetWindowText(LONG hWnd, BSTR Text, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetClassName(LONG hWnd, BSTR* pRet) override;
    STDMETHODIMP GetParentWindow(LONG hWnd, LONG* pRet) override;
    STDMETHODIMP GetOwnerWindow(LONG hWnd, LONG* pRet) override;
    STDMETHODIMP SetParentWindow(LONG hWnd, LONG hWndNewParent, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetWindowProcessId(LONG hWnd, LONG* pRet) override;
    STDMETHODIMP GetWindowThreadId(LONG hWnd, LONG* pRet) override;
    STDMETHODIMP GetWindowStyle(LONG hWnd, VARIANT_BOOL Extended, LONG* pRet) override;
    STDMETHODIMP ModifyWindowStyle(LONG hWnd, LONG RemoveStyle, LONG AddStyle, VARIANT_BOOL Extended, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetForegroundWindow(LONG* pRet) override;
    STDMETHODIMP SetForegroundWindow(LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetWindowFromPoint(LONG X, LONG Y, LONG* pRet) override;
    STDMETHODIMP FindWindow(BSTR Title, BSTR ClassName, LONG* pRet) override;
    STDMETHODIMP FindChildWindow(LONG hWndParent, BSTR Title, BSTR ClassName, LONG hWndAfter, LONG* pRet) override;
    STDMETHODIMP FindWindowLike(BSTR TitlePattern, BSTR ClassPattern, LONG hWndParent, LONG* pRet) override;
    STDMETHODIMP GetChildWindows(LONG hWndParent, BSTR ClassName, VARIANT_BOOL Recursive, VARIANT* pRet) override;
    STDMETHODIMP GetTopLevelWindows(LONG ProcessId, VARIANT_BOOL VisibleOnly, VARIANT* pRet) override;
    STDMETHODIMP SendMessage(LONG hWnd, LONG Message, LONG_PTR wParam, LONG_PTR lParam, LONG Timeout, LONG_PTR* pRet) override;
    STDMETHODIMP SendMessageString(LONG hWnd, LONG Message, LONG_PTR wParam, BSTR Text, LONG Timeout, LONG_PTR* pRet) override;
    STDMETHODIMP PostMessage(LONG hWnd, LONG Message, LONG_PTR wParam, LONG_PTR lParam, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetTaskbarRect(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetTaskbarEdge(TaskbarEdgeConstants* pRet) override;
    STDMETHODIMP IsTaskbarAutoHide(VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetWorkArea(TOVA_RECT* pRECT, LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetWorkArea3(LONG* Left, LONG* Top, LONG* Width, LONG* Height, LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP ShellExecute(BSTR File, BSTR Parameters, BSTR Verb, BSTR Folder, ShowWindowConstants ShowCmd, LONG hWndOwner, VARIANT_BOOL* pRet) override;
    STDMETHODIMP RunAndWait(BSTR CommandLine, LONG* ExitCode, LONG Timeout, ShowWindowConstants ShowCmd, BSTR Folder, VARIANT_BOOL PumpMessages, VARIANT_BOOL* pRet) override;
    STDMETHODIMP RunProcess(BSTR CommandLine, ShowWindowConstants ShowCmd, BSTR Folder, LONG* pRet) override;
    STDMETHODIMP WaitForProcess(LONG ProcessId, LONG Timeout, LONG* ExitCode, VARIANT_BOOL PumpMessages, VARIANT_BOOL* pRet) override;
    STDMETHODIMP OpenURL(BSTR URL, LONG hWndOwner, VARIANT_BOOL* pRet) override;
    STDMETHODIMP OpenDocument(BSTR Path, BSTR Verb, LONG hWndOwner, VARIANT_BOOL* pRet) override;
    STDMETHODIMP FindExecutable(BSTR DocumentPath, BSTR* pRet) override;
    STDMETHODIMP RegisterServer(BSTR Path, VARIANT_BOOL PerUser, VARIANT_BOOL* pRet) override;
    STDMETHODIMP UnregisterServer(BSTR Path, VARIANT_BOOL PerUser, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsClassRegistered(BSTR ClassName, VARIANT_BOOL* pRet) override;
    STDMETHODIMP ProgIDToCLSID(BSTR ProgID, BSTR* pRet) override;
    STDMETHODIMP CLSIDToProgID(BSTR CLSID, BSTR* pRet) override;
    STDMETHODIMP GetServerPath(BSTR ClassName, BSTR* pRet) override;
    STDMETHODIMP BrowseForFolder(BSTR Title, BSTR InitialFolder, LONG hWndOwner, BrowseFolderConstants Flags, BSTR Caption, BSTR* pRet) override;
    STDMETHODIMP GetOpenFileName(BSTR Filter, BSTR InitialFolder, BSTR Title, LONG hWndOwner, BSTR FileName, BSTR DefaultExtension, FileDialogConstants Flags, LONG* FilterIndex, BSTR* pRet) override;
    STDMETHODIMP GetOpenFileNames(BSTR Filter, BSTR InitialFolder, BSTR Title, LONG hWndOwner, BSTR FileName, BSTR DefaultExtension, FileDialogConstants Flags, LONG* FilterIndex, VARIANT* pRet) override;
    STDMETHODIMP GetSaveFileName(BSTR Filter, BSTR InitialFolder, BSTR Title, LONG hWndOwner, BSTR FileName, BSTR DefaultExtension, FileDialogConstants Flags, LONG* FilterIndex, BSTR* pRet) override;
    STDMETHODIMP ChooseColor(LONG InitialColor, LONG hWndOwner, VARIANT_BOOL FullOpen, LONG* pRet) override;
    STDMETHODIMP ChooseFont(IFontDisp* Font, LONG hWndOwner, LONG* Color, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetTextWidth(BSTR Text, VARIANT Font, LONG* pRet) override;
    STDMETHODIMP GetTextWidth2(LONG hDC, BSTR Text, LONG* pRet) override;
    STDMETHODIMP GetTextHeight(BSTR Text, VARIANT Font, LONG* pRet) override;
    STDMETHODIMP GetTextHeight2(LONG hDC, BSTR Text, LONG* pRet) override;
    STDMETHODIMP GetFontNames(VARIANT_BOOL FixedPitchOnly, LONG Charset, VARIANT* pRet) override;
    STDMETHODIMP FontExists(BSTR FontName, VARIANT_BOOL* pRet) override;
    STDMETHODIMP CreateFontHandle(IFontDisp* Font, LONG hDC, LONG* pRet) override;
    STDMETHODIMP CreateStdFont(BSTR FaceName, FLOAT Size, VARIANT_BOOL Bold, VARIANT_BOOL Italic, VARIANT_BOOL Underline, VARIANT_BOOL Strikethrough, IFontDisp** pRet) override;
    STDMETHODIMP FontHandleToStdFont(LONG hFont, IFontDisp** pRet) override;
    STDMETHODIMP GetSystemFont(SystemFontConstants Which, IFontDisp** pRet) override;
    STDMETHODIMP DeleteGDIObject(LONG hObject, VARIANT_BOOL* pRet) override;
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
