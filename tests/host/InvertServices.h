// The test filter's orders that use what other filters ask of a host.
#pragma once

#include "plugin/interface/HostInterface.h"

#include <string>

int32_t Planes(const FilterRecord &record);
// Inverts what the host has handed out, `count` samples a row.
void InvertBuffers(const FilterRecord &record, int32_t count, int32_t rows);

// False: not one of these orders. The result is an error as soon as a service does not do what it should.
bool PlayServices(const std::string &order, int16_t selector, FilterRecord &record, int16_t *result);
