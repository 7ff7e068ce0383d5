// A library that is half a plug-in: it lacks the function Release.
extern "C" void Initialise();
extern "C" void Initialise() {}
