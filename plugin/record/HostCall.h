// Calls of the host's procedures. What one of them throws or raises ends at the call, before it could tear
// down a run of ours that still holds threads, memory and services: the caller gets an answer of failure and
// goes the way of any other failure. Host's thread.
#pragma once

#include "plugin/interface/HostTypes.h"

#include <type_traits>

// Runs it; false, noted and logged, when it threw or raised. Objects in what raised may be left undestroyed.
bool RunGuarded(void (*body)(void *), void *argument);

template <typename Body> bool RunGuarded(Body body) {
    return RunGuarded([](void *argument) { (*static_cast<Body *>(argument))(); }, &body);
}

// An error where one was called for since ForgetHostFailure, else kNoError.
HostResult HostFailure();
void ForgetHostFailure();

// The answer of a procedure that gave none: null, 0 for a Boolean, an error for a number.
template <typename Answer> constexpr Answer FailedAnswer() {
    if constexpr (std::is_pointer_v<Answer>)
        return nullptr;
    else if constexpr (std::is_unsigned_v<Answer>)
        return 0;
    else
        return kErrPlugInHostInsufficient;
}

template <typename Answer, typename... Parameters, typename... Arguments>
Answer CallHost(Answer (*procedure)(Parameters...), Arguments... arguments) {
    if constexpr (std::is_void_v<Answer>) {
        RunGuarded([&] { procedure(arguments...); });
    } else {
        Answer answer = FailedAnswer<Answer>();
        RunGuarded([&] { answer = procedure(arguments...); });
        return answer;
    }
}
