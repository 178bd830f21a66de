// One question to the maker's update service, with a limit on the time that it takes.
#pragma once

#include "web/UpdateService.h"

#include <cstddef>
#include <cstdint>

constexpr uint32_t kUpdateTimeLimit = 5000; // milliseconds, from the beginning to the last byte
constexpr size_t kMostUpdateAnswer = 64;    // characters

// What came of it. `failure` is null when there is an answer, else what went wrong, for the log; `code` is
// then the system's error or the answer's status, or 0.
struct UpdateAnswer {
    char text[kMostUpdateAnswer + 1]; // not checked yet, not terminated
    size_t length;
    const char *failure;
    uint32_t code;
};

struct UpdateRequest;

// Asks with `userAgent` ("product/version") and nothing else of our own: no cookies, no logon, no referrer.
// No redirection is followed, to the same host neither: the address is expected to answer by itself. Returns
// within the time limit. *request receives what EndUpdateRequest must be given; null when there is nothing to
// end.
UpdateAnswer AskUpdateService(const UpdateService &service, const char *userAgent, UpdateRequest **request);
// Waits until the system has let go of the request, no longer than the limit: what it holds for longer is
// left to it.
void EndUpdateRequest(UpdateRequest *request);

// A request that is on its way ends at once, without an answer, and none begins until they are wanted again.
// Any thread.
void WantUpdateRequests(bool wanted);
constexpr char kUpdateUnwanted[] = "it is no longer wanted"; // the failure of such a request
