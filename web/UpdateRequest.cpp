// The request runs on the system's threads, because only a request of that kind may be closed while it waits.
#include "web/UpdateRequest.h"

#include "diag/SystemLibrary.h"

#include <atomic>
#include <cwchar>
#include <new>
#include <windows.h>

#include <winhttp.h>

namespace {

constexpr size_t kMostAddress = 512;
constexpr DWORD kTls12 = 0x800, kTls13 = 0x2000;
constexpr DWORD kAutomaticProxy = 4; // of Windows 8.1 and later
constexpr DWORD kStatusGood = 200;
// The request that waits for an answer, if any, and whether there may be one.
SRWLOCK gWaitingLock = SRWLOCK_INIT;
UpdateRequest *gWaiting;
std::atomic<bool> gUnwanted;

constexpr wchar_t kLoopbackHost[] = L"127.0.0.1";

// The library is loaded for the first question only: a run that asks nobody does without it.
struct HttpCalls {
    HMODULE library;
    decltype(&WinHttpOpen) open;
    decltype(&WinHttpCrackUrl) crackUrl;
    decltype(&WinHttpConnect) connect;
    decltype(&WinHttpOpenRequest) openRequest;
    decltype(&WinHttpSetOption) setOption;
    decltype(&WinHttpSetTimeouts) setTimeouts;
    decltype(&WinHttpSetStatusCallback) setStatusCallback;
    decltype(&WinHttpSendRequest) sendRequest;
    decltype(&WinHttpReceiveResponse) receiveResponse;
    decltype(&WinHttpQueryHeaders) queryHeaders;
    decltype(&WinHttpReadData) readData;
    decltype(&WinHttpCloseHandle) closeHandle;
};

struct Target {
    wchar_t host[kMostAddress], path[kMostAddress];
    INTERNET_PORT port;
    bool isSecure;
};

} // namespace

struct UpdateRequest {
    HttpCalls http;
    HINTERNET session, connection, handle;
    HANDLE stepped;                // a step of the request has ended
    HANDLE closed;                 // the system has let go of `handle`
    std::atomic<DWORD> lastStatus; // WINHTTP_CALLBACK_STATUS_ of that step
    std::atomic<DWORD> lastError;  // when it was an error
    std::atomic<DWORD> bytesRead;
    ULONGLONG deadline;
    std::atomic<bool> isUnwanted;       // for good, even when others are wanted again
    char buffer[kMostUpdateAnswer + 1]; // one more than allowed shows that there is more
};

namespace {

template <typename Function> bool Find(HMODULE library, const char *name, Function *function) {
    *function = reinterpret_cast<Function>(reinterpret_cast<void *>(GetProcAddress(library, name)));
    return *function != nullptr;
}

// The library stays loaded: the system's threads may still be in it.
bool LoadHttpCalls(HttpCalls *http) {
    const HMODULE library = static_cast<HMODULE>(LoadSystemLibrary(L"winhttp.dll"));
    http->library = library;
    return library && Find(library, "WinHttpOpen", &http->open) &&
           Find(library, "WinHttpCrackUrl", &http->crackUrl) &&
           Find(library, "WinHttpConnect", &http->connect) &&
           Find(library, "WinHttpOpenRequest", &http->openRequest) &&
           Find(library, "WinHttpSetOption", &http->setOption) &&
           Find(library, "WinHttpSetTimeouts", &http->setTimeouts) &&
           Find(library, "WinHttpSetStatusCallback", &http->setStatusCallback) &&
           Find(library, "WinHttpSendRequest", &http->sendRequest) &&
           Find(library, "WinHttpReceiveResponse", &http->receiveResponse) &&
           Find(library, "WinHttpQueryHeaders", &http->queryHeaders) &&
           Find(library, "WinHttpReadData", &http->readData) &&
           Find(library, "WinHttpCloseHandle", &http->closeHandle);
}

void CALLBACK OnRequestStatus(HINTERNET, DWORD_PTR context, DWORD status, void *information, DWORD length) {
    UpdateRequest *request = reinterpret_cast<UpdateRequest *>(context);
    if (!request)
        return;
    switch (status) {
    case WINHTTP_CALLBACK_STATUS_REQUEST_ERROR:
        request->lastError = static_cast<const WINHTTP_ASYNC_RESULT *>(information)->dwError;
        break;
    case WINHTTP_CALLBACK_STATUS_READ_COMPLETE:
        request->bytesRead = length;
        break;
    case WINHTTP_CALLBACK_STATUS_SENDREQUEST_COMPLETE:
    case WINHTTP_CALLBACK_STATUS_HEADERS_AVAILABLE:
        break;
    case WINHTTP_CALLBACK_STATUS_HANDLE_CLOSING:
        SetEvent(request->closed); // the request may be gone from here on
        return;
    default:
        return;
    }
    request->lastStatus = status;
    SetEvent(request->stepped);
}

bool Widen(const char *text, wchar_t (&wide)[kMostAddress]) {
    return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, -1, wide, kMostAddress) != 0;
}

bool FindTarget(const HttpCalls &http, const UpdateService &service, Target *target) {
    wchar_t address[kMostAddress];
    URL_COMPONENTS parts = {};
    parts.dwStructSize = sizeof parts;
    parts.lpszHostName = target->host;
    parts.dwHostNameLength = kMostAddress;
    parts.lpszUrlPath = target->path;
    parts.dwUrlPathLength = kMostAddress;
    if (!Widen(service.address, address) || !http.crackUrl(address, 0, 0, &parts))
        return false;
    target->port = parts.nPort;
    target->isSecure = parts.nScheme == INTERNET_SCHEME_HTTPS;
    return target->isSecure || (service.allowsPlainLoopback && parts.nScheme == INTERNET_SCHEME_HTTP &&
                                wcscmp(target->host, kLoopbackHost) == 0);
}

// With any other protocol nobody is asked.
bool RequireProtocols(const HttpCalls &http, HINTERNET session) {
    for (DWORD protocols : {kTls12 | kTls13, kTls12})
        if (http.setOption(session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols, sizeof protocols))
            return true;
    return false;
}

// Systems before Windows 8.1 do not know the automatic proxy, nor the newest protocol.
HINTERNET OpenSession(const HttpCalls &http, const wchar_t *userAgent, bool isSecure) {
    const auto open = [&](DWORD access) {
        return http.open(userAgent, access, WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS,
                         WINHTTP_FLAG_ASYNC);
    };
    if (!isSecure)
        return open(WINHTTP_ACCESS_TYPE_NO_PROXY);
    HINTERNET session = open(kAutomaticProxy);
    if (!session)
        session = open(WINHTTP_ACCESS_TYPE_DEFAULT_PROXY);
    if (session && !RequireProtocols(http, session)) {
        http.closeHandle(session);
        return nullptr;
    }
    return session;
}

// Without these, the system would add what it knows about the user, go elsewhere, or wait for an answer
// longer than for anything else.
bool RestrictRequest(const HttpCalls &http, HINTERNET handle) {
    DWORD disabled = WINHTTP_DISABLE_COOKIES | WINHTTP_DISABLE_AUTHENTICATION | WINHTTP_DISABLE_REDIRECTS |
                     WINHTTP_DISABLE_KEEP_ALIVE;
    DWORD never = WINHTTP_OPTION_REDIRECT_POLICY_NEVER, noLogon = WINHTTP_AUTOLOGON_SECURITY_LEVEL_HIGH;
    DWORD limit = kUpdateTimeLimit;
    return http.setOption(handle, WINHTTP_OPTION_DISABLE_FEATURE, &disabled, sizeof disabled) &&
           http.setOption(handle, WINHTTP_OPTION_REDIRECT_POLICY, &never, sizeof never) &&
           http.setOption(handle, WINHTTP_OPTION_AUTOLOGON_POLICY, &noLogon, sizeof noLogon) &&
           http.setOption(handle, WINHTTP_OPTION_RECEIVE_RESPONSE_TIMEOUT, &limit, sizeof limit);
}

bool OpenRequest(UpdateRequest *request, const Target &target, const wchar_t *userAgent) {
    const HttpCalls &http = request->http;
    constexpr int kLimit = static_cast<int>(kUpdateTimeLimit);
    request->session = OpenSession(http, userAgent, target.isSecure);
    if (!request->session || !http.setTimeouts(request->session, kLimit, kLimit, kLimit, kLimit))
        return false;
    request->connection = http.connect(request->session, target.host, target.port, 0);
    if (!request->connection)
        return false;
    HINTERNET handle = http.openRequest(request->connection, L"GET", target.path, nullptr, WINHTTP_NO_REFERER,
                                        WINHTTP_DEFAULT_ACCEPT_TYPES,
                                        WINHTTP_FLAG_REFRESH | (target.isSecure ? WINHTTP_FLAG_SECURE : 0));
    if (!handle)
        return false;
    DWORD_PTR context = reinterpret_cast<DWORD_PTR>(request);
    if (!RestrictRequest(http, handle) ||
        !http.setOption(handle, WINHTTP_OPTION_CONTEXT_VALUE, &context, sizeof context) ||
        http.setStatusCallback(handle, OnRequestStatus,
                               WINHTTP_CALLBACK_FLAG_ALL_COMPLETIONS | WINHTTP_CALLBACK_FLAG_HANDLES,
                               0) == WINHTTP_INVALID_STATUS_CALLBACK) {
        http.closeHandle(handle);
        return false;
    }
    request->handle = handle;
    return true;
}

// Waits for the end of the step just begun.
bool AwaitStep(UpdateRequest *request, DWORD wanted, UpdateAnswer *answer) {
    const ULONGLONG now = GetTickCount64();
    const DWORD left = now < request->deadline ? static_cast<DWORD>(request->deadline - now) : 0;
    const bool inTime = left > 0 && WaitForSingleObject(request->stepped, left) == WAIT_OBJECT_0;
    if (gUnwanted || request->isUnwanted)
        answer->failure = kUpdateUnwanted;
    else if (!inTime)
        answer->failure = "it took too long";
    else if (request->lastStatus == WINHTTP_CALLBACK_STATUS_REQUEST_ERROR) {
        answer->failure = "the connection failed";
        answer->code = request->lastError;
    } else if (request->lastStatus != wanted)
        answer->failure = "the connection behaved unexpectedly";
    return answer->failure == nullptr;
}

bool Fail(const char *failure, uint32_t code, UpdateAnswer *answer) {
    answer->failure = failure;
    answer->code = code;
    return false;
}

bool FailStep(UpdateAnswer *answer) {
    return Fail("the connection failed", GetLastError(), answer);
}

bool IsStatusGood(UpdateRequest *request, UpdateAnswer *answer) {
    DWORD status = 0, size = sizeof status;
    if (!request->http.queryHeaders(request->handle, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                                    WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX))
        return FailStep(answer);
    return status == kStatusGood || Fail("it was no plain answer", status, answer);
}

bool ReadAnswer(UpdateRequest *request, UpdateAnswer *answer) {
    for (size_t length = 0; length <= kMostUpdateAnswer;) {
        if (!request->http.readData(request->handle, request->buffer + length,
                                    static_cast<DWORD>(sizeof request->buffer - length), nullptr))
            return FailStep(answer);
        if (!AwaitStep(request, WINHTTP_CALLBACK_STATUS_READ_COMPLETE, answer))
            return false;
        const DWORD got = request->bytesRead;
        if (got == 0) {
            answer->length = length;
            return true;
        }
        if (got > sizeof request->buffer - length)
            break;
        length += got;
    }
    return Fail("it was too long", 0, answer);
}

bool Exchange(UpdateRequest *request, UpdateAnswer *answer) {
    const HttpCalls &http = request->http;
    if (!http.sendRequest(request->handle, WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0, 0,
                          reinterpret_cast<DWORD_PTR>(request)))
        return FailStep(answer);
    if (!AwaitStep(request, WINHTTP_CALLBACK_STATUS_SENDREQUEST_COMPLETE, answer))
        return false;
    if (!http.receiveResponse(request->handle, nullptr))
        return FailStep(answer);
    if (!AwaitStep(request, WINHTTP_CALLBACK_STATUS_HEADERS_AVAILABLE, answer) ||
        !IsStatusGood(request, answer) || !ReadAnswer(request, answer))
        return false;
    CopyMemory(answer->text, request->buffer, answer->length);
    return true;
}

// Not image memory, and the counter of that may be gone when the answer comes: so it is not counted.
UpdateRequest *MakeRequest() {
    UpdateRequest *request = new (std::nothrow) UpdateRequest{};
    if (!request)
        return nullptr;
    request->stepped = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    request->closed = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    request->deadline = GetTickCount64() + kUpdateTimeLimit;
    return request;
}

void AskThrough(UpdateRequest *request, const UpdateService &service, const char *userAgent,
                UpdateAnswer *answer) {
    wchar_t wideAgent[kMostAddress];
    Target target = {};
    const bool isReady =
        request->stepped && request->closed && LoadHttpCalls(&request->http) && Widen(userAgent, wideAgent);
    if (gUnwanted)
        Fail(kUpdateUnwanted, 0, answer);
    else if (isReady && !FindTarget(request->http, service, &target))
        Fail("the address is not one to ask", 0, answer);
    else if (!isReady || !OpenRequest(request, target, wideAgent))
        Fail("the system cannot ask", GetLastError(), answer);
    else
        Exchange(request, answer);
}

void SetWaiting(UpdateRequest *request) {
    AcquireSRWLockExclusive(&gWaitingLock);
    gWaiting = request;
    ReleaseSRWLockExclusive(&gWaitingLock);
}

} // namespace

void WantUpdateRequests(bool wanted) {
    AcquireSRWLockExclusive(&gWaitingLock);
    gUnwanted = !wanted;
    if (!wanted && gWaiting) {
        gWaiting->isUnwanted = true;
        if (gWaiting->stepped)
            SetEvent(gWaiting->stepped);
    }
    ReleaseSRWLockExclusive(&gWaitingLock);
}

UpdateAnswer AskUpdateService(const UpdateService &service, const char *userAgent, UpdateRequest **request) {
    UpdateAnswer answer = {};
    *request = MakeRequest();
    if (!*request)
        Fail("memory is short", ERROR_NOT_ENOUGH_MEMORY, &answer);
    else {
        SetWaiting(*request);
        AskThrough(*request, service, userAgent, &answer);
        SetWaiting(nullptr);
    }
    return answer;
}

void EndUpdateRequest(UpdateRequest *request) {
    if (!request)
        return;
    const HttpCalls &http = request->http;
    if (request->handle && http.closeHandle(request->handle) &&
        WaitForSingleObject(request->closed, kUpdateTimeLimit) != WAIT_OBJECT_0)
        return; // the system may still write into it
    if (request->connection)
        http.closeHandle(request->connection);
    if (request->session)
        http.closeHandle(request->session);
    if (request->stepped)
        CloseHandle(request->stepped);
    if (request->closed)
        CloseHandle(request->closed);
    delete request;
}
