// The update service that this build asks.
#include "plugin/MakerAddresses.h"
#include "plugin/UpdateRequest.h"

UpdateService CurrentUpdateService() {
    return {kUpdateAddress, false};
}
