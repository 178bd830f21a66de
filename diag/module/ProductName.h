// What the product is called.
#pragma once

constexpr char kShortProductName[] = "Brillatrix";
constexpr char kProductName[] = "Brillatrix Pro";
