// The update service that this build asks.
#include "web/MakerAddresses.h"
#include "web/UpdateRequest.h"

UpdateService CurrentUpdateService() {
    return {kUpdateAddress, false};
}
