// The interactive part of a run.
#pragma once

#include "diag/ResultCodes.h"
#include "engine/image/ImageBuffer.h"

// Lets the user choose the parameters, with a preview of the image while the light source table is being
// built and after, and clears the dialog-pending byte. The table stays as the user left it. kUserCanceledErr
// when the user cancels or the dialog cannot be opened; the failure when a fatal error ended it. The parameters
// are then what they were.
HostResult RunDialog(const ImageBuffer &input);
