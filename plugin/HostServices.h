// The services held over several calls, each taken and given back in pairs: the host's property and error
// suites, and COM.
#pragma once

// Notes where this call's host has its basic suite. At the beginning of every call.
void FindBasicSuite();
// Takes the suites that are not held yet. A host that offers none is served all the same.
void AcquireHostSuites();
// Gives back the error suite, then the property suite.
void ReleaseHostSuites();

// False when the system refuses.
bool InitializeCom();
void UninitializeCom();

// Keeps the host from animating its own wait cursor over ours until the next call.
void SuspendHostCursor();

// All that a run holds: the parameter-block accessor, COM and the suites, in that order. After a failed call
// and in Finish.
void ReleaseRunServices();
