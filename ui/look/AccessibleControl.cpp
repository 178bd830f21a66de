#include "ui/look/AccessibleControl.h"

#include "diag/SystemLibrary.h"
#include "ui/window/ForgedMessages.h"
#include "ui/window/SystemFunction.h"

#include <commctrl.h>
#include <cwchar>
#include <iterator>
#include <new>
#include <oleacc.h>
#include <utility>

namespace {

constexpr UINT_PTR kAccessibleSubclassId = 9;
constexpr size_t kValueCapacity = 200;

// What only readers ask for. To load the libraries with the module would make every start longer; once
// loaded, they stay, as a reader may hold on to what they gave.
struct ReaderFunctions {
    decltype(&SysAllocString) copyText;
    decltype(&CreateStdAccessibleObject) createStandard;
    decltype(&LresultFromObject) giveObject;
};

const ReaderFunctions &Readers() {
    static const ReaderFunctions functions = [] {
        const auto text = static_cast<HMODULE>(LoadSystemLibrary(L"oleaut32.dll")),
                   access = static_cast<HMODULE>(LoadSystemLibrary(L"oleacc.dll"));
        return ReaderFunctions{
            SystemFunction<decltype(&SysAllocString)>(text, "SysAllocString"),
            SystemFunction<decltype(&CreateStdAccessibleObject)>(access, "CreateStdAccessibleObject"),
            SystemFunction<decltype(&LresultFromObject)>(access, "LresultFromObject")};
    }();
    return functions;
}

BSTR CopyText(const wchar_t *text) {
    return text && Readers().copyText ? Readers().copyText(text) : nullptr;
}

bool IsSelf(const VARIANT &child) {
    return child.vt == VT_I4 && child.lVal == CHILDID_SELF;
}

HRESULT GiveText(const wchar_t *text, BSTR *given) {
    *given = CopyText(text);
    return *given ? S_OK : S_FALSE;
}

HRESULT GiveNumber(LONG number, VARIANT *given) {
    given->vt = VT_I4;
    given->lVal = number;
    return S_OK;
}

// The form that COM asks for. What is not said here is what the system's own object for the window says.
struct AccessibleObject final : IAccessible {
    LONG references = 1;
    HWND control; // null once it is destroyed
    AccessibleTraits traits;
    IAccessible *standard = nullptr;

    AccessibleObject(HWND window, const AccessibleTraits &said) : control(window), traits(said) {}
    virtual ~AccessibleObject() { LetGo(); }

    void LetGo() {
        control = nullptr;
        if (IAccessible *held = std::exchange(standard, nullptr))
            held->Release();
    }
    bool NeedStandard() {
        if (!standard && control && Readers().createStandard)
            Readers().createStandard(control, static_cast<LONG>(OBJID_CLIENT), __uuidof(IAccessible),
                                     reinterpret_cast<void **>(&standard));
        return standard != nullptr;
    }
    bool Says(const VARIANT &child) const { return control && IsSelf(child); }
    template <typename... Given, typename... Passed>
    HRESULT Ask(HRESULT (STDMETHODCALLTYPE IAccessible::*method)(Given...), Passed... passed) {
        return NeedStandard() ? (standard->*method)(passed...) : CO_E_OBJNOTCONNECTED;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void **given) override {
        const bool isOurs = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch) ||
                            IsEqualIID(id, __uuidof(IAccessible));
        *given = isOurs ? static_cast<IAccessible *>(this) : nullptr;
        if (isOurs)
            AddRef();
        return isOurs ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override {
        return static_cast<ULONG>(InterlockedIncrement(&references));
    }
    ULONG STDMETHODCALLTYPE Release() override {
        const LONG left = InterlockedDecrement(&references);
        if (left == 0)
            delete this;
        return static_cast<ULONG>(left);
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT *count) override {
        return NeedStandard() ? standard->GetTypeInfoCount(count) : CO_E_OBJNOTCONNECTED;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo **info) override {
        return NeedStandard() ? standard->GetTypeInfo(index, locale, info) : CO_E_OBJNOTCONNECTED;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID id, LPOLESTR *names, UINT count, LCID locale,
                                            DISPID *ids) override {
        return NeedStandard() ? standard->GetIDsOfNames(id, names, count, locale, ids) : CO_E_OBJNOTCONNECTED;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID id, LCID locale, WORD flags,
                                     DISPPARAMS *parameters, VARIANT *result, EXCEPINFO *failure,
                                     UINT *argument) override {
        return NeedStandard()
                   ? standard->Invoke(member, id, locale, flags, parameters, result, failure, argument)
                   : CO_E_OBJNOTCONNECTED;
    }

    HRESULT STDMETHODCALLTYPE get_accParent(IDispatch **parent) override {
        return Ask(&IAccessible::get_accParent, parent);
    }
    HRESULT STDMETHODCALLTYPE get_accChildCount(LONG *count) override {
        return Ask(&IAccessible::get_accChildCount, count);
    }
    HRESULT STDMETHODCALLTYPE get_accChild(VARIANT child, IDispatch **given) override {
        return Ask(&IAccessible::get_accChild, child, given);
    }
    HRESULT STDMETHODCALLTYPE get_accName(VARIANT child, BSTR *name) override {
        return Says(child) ? GiveText(traits.name, name) : Ask(&IAccessible::get_accName, child, name);
    }
    HRESULT STDMETHODCALLTYPE get_accValue(VARIANT child, BSTR *value) override {
        if (!Says(child) || !traits.value)
            return Ask(&IAccessible::get_accValue, child, value);
        wchar_t text[kValueCapacity] = L"";
        traits.value(control, text, std::size(text));
        return GiveText(text, value);
    }
    HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT child, BSTR *description) override {
        return Says(child) ? GiveText(traits.description, description)
                           : Ask(&IAccessible::get_accDescription, child, description);
    }
    HRESULT STDMETHODCALLTYPE get_accRole(VARIANT child, VARIANT *role) override {
        return Says(child) ? GiveNumber(traits.role, role) : Ask(&IAccessible::get_accRole, child, role);
    }
    HRESULT STDMETHODCALLTYPE get_accState(VARIANT child, VARIANT *state) override {
        return Says(child) ? GiveNumber(State(), state) : Ask(&IAccessible::get_accState, child, state);
    }
    HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT child, BSTR *help) override {
        return Ask(&IAccessible::get_accHelp, child, help);
    }
    HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR *file, VARIANT child, LONG *topic) override {
        return Ask(&IAccessible::get_accHelpTopic, file, child, topic);
    }
    HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT child, BSTR *key) override {
        return Says(child) ? GiveText(traits.key, key)
                           : Ask(&IAccessible::get_accKeyboardShortcut, child, key);
    }
    HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT *child) override {
        return Ask(&IAccessible::get_accFocus, child);
    }
    HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT *children) override {
        return Ask(&IAccessible::get_accSelection, children);
    }
    HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT child, BSTR *action) override {
        return Says(child) && traits.action ? GiveText(traits.action, action)
                                            : Ask(&IAccessible::get_accDefaultAction, child, action);
    }
    HRESULT STDMETHODCALLTYPE accSelect(LONG flags, VARIANT child) override {
        return Ask(&IAccessible::accSelect, flags, child);
    }
    HRESULT STDMETHODCALLTYPE accLocation(LONG *left, LONG *top, LONG *width, LONG *height,
                                          VARIANT child) override {
        return Ask(&IAccessible::accLocation, left, top, width, height, child);
    }
    HRESULT STDMETHODCALLTYPE accNavigate(LONG direction, VARIANT from, VARIANT *to) override {
        return Ask(&IAccessible::accNavigate, direction, from, to);
    }
    HRESULT STDMETHODCALLTYPE accHitTest(LONG x, LONG y, VARIANT *child) override {
        return Ask(&IAccessible::accHitTest, x, y, child);
    }
    // Posted: a menu or a box that it opens must not hold up whoever asks.
    HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT child) override {
        if (!Says(child) || !traits.action)
            return Ask(&IAccessible::accDoDefaultAction, child);
        if (!IsWindowEnabled(control))
            return DISP_E_MEMBERNOTFOUND;
        PostMessageW(GetParent(control), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(control), STN_CLICKED),
                     reinterpret_cast<LPARAM>(control));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_accName(VARIANT, BSTR) override { return DISP_E_MEMBERNOTFOUND; }
    HRESULT STDMETHODCALLTYPE put_accValue(VARIANT child, BSTR value) override {
        return Ask(&IAccessible::put_accValue, child, value);
    }

    // What only the control itself knows.
    LONG StandardState() {
        VARIANT self = {}, state = {};
        self.vt = VT_I4;
        self.lVal = CHILDID_SELF;
        if (traits.action || Ask(&IAccessible::get_accState, self, &state) != S_OK || state.vt != VT_I4)
            return 0;
        return state.lVal & (STATE_SYSTEM_EXPANDED | STATE_SYSTEM_COLLAPSED);
    }
    LONG State() {
        const LONG style = GetWindowLongW(control, GWL_STYLE);
        LONG state = StandardState();
        if (style & WS_TABSTOP)
            state |= STATE_SYSTEM_FOCUSABLE;
        if (GetFocus() == control)
            state |= STATE_SYSTEM_FOCUSED;
        if (!IsWindowEnabled(control))
            state |= STATE_SYSTEM_UNAVAILABLE;
        if (!IsWindowVisible(control))
            state |= STATE_SYSTEM_INVISIBLE;
        if (traits.isPressed && traits.isPressed(control))
            state |= STATE_SYSTEM_PRESSED;
        if (traits.hasPopup)
            state |= STATE_SYSTEM_HASPOPUP;
        return state;
    }
};

// Programs elsewhere that still hold on to the object are cut off: this module may be unloaded next.
void ForgetObject(AccessibleObject *object) {
    object->LetGo();
    CoDisconnectObject(object, 0);
    object->Release();
}

LRESULT CALLBACK AccessibleProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                DWORD_PTR data) {
    AccessibleObject *object = reinterpret_cast<AccessibleObject *>(data);
    if (message == WM_GETOBJECT && static_cast<LONG>(lParam) == static_cast<LONG>(OBJID_CLIENT) &&
        Readers().giveObject)
        return Readers().giveObject(__uuidof(IAccessible), wParam, object);
    if (IsForgedDestruction(window, message))
        return 0;
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(window, AccessibleProc, id);
        ForgetObject(object);
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

} // namespace

bool DescribeControl(HWND control, const AccessibleTraits &traits) {
    AccessibleObject *object = control ? new (std::nothrow) AccessibleObject(control, traits) : nullptr;
    if (!object)
        return false;
    if (SetWindowSubclass(control, AccessibleProc, kAccessibleSubclassId,
                          reinterpret_cast<DWORD_PTR>(object)))
        return true;
    object->Release();
    return false;
}

void TellAccessibleState(HWND control) {
    if (control)
        NotifyWinEvent(EVENT_OBJECT_STATECHANGE, control, OBJID_CLIENT, CHILDID_SELF);
}
