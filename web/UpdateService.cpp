#include "web/UpdateService.h"

#include "web/MakerAddresses.h"

UpdateService CurrentUpdateService() {
    return {kUpdateAddress, false};
}
