// A library that is half a plug-in: it has no function Release.
extern "C" void Initialise();
extern "C" void Initialise() {}
