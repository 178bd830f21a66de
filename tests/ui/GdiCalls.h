// Counts the drawing objects that the code under test makes and gives back, and makes a chosen creation fail.
#pragma once

// Contexts, bitmaps, fonts, regions and icons that are alive.
int LiveGdiObjects();
// The n-th creation from now on (1 = the next) gives nothing, once. 0: none fails.
void FailGdiCreation(int n);
