// The update service that this build asks.
#pragma once

struct UpdateService {
    const char *address;      // "https://host/path"
    bool allowsPlainLoopback; // also "http://127.0.0.1:port/path", straight and past any proxy
};

// The service of this build: the maker's. Tests have one of their own.
UpdateService CurrentUpdateService();
