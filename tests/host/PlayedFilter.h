// A filter made of a test's own function, played by a host.
#pragma once

#include "host/filter/FilterHost.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

// Gets every selector but About; returns the result word.
using FilterPlay = std::function<int16_t(int16_t selector, FilterRecord &record, intptr_t *data)>;

// A host with a document, and the function it calls. Open() opens it with the settings made so far.
struct PlayedHost {
    host::FilterHost filterHost;
    host::Pipl pipl; // case flags: like a filter that writes outside the selection and wants no prefill

    explicit PlayedHost(FilterPlay play);
    ~PlayedHost();

    void Open();
    // Opens when needed, runs Prepare to Finish, and returns the code.
    int16_t Run();
    // Calls the function inside a Start and returns the violations that this made.
    std::vector<std::string> ViolationsOf(const std::function<void(FilterRecord &record)> &action);
    bool HasViolation(const std::string &part) const;
};

// Sets the rectangles of the record or of its large-document part.
void AskFor(FilterRecord &record, const host::Rectangle &in, const host::Rectangle &out,
            const host::Rectangle &mask = {});
void AskForPlanes(FilterRecord &record, int16_t lo, int16_t hi);
