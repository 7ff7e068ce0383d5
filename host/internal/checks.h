// The checks of what guests do with the engine, in debug builds.
#pragma once

namespace ORVANE {

#ifdef NDEBUG
inline constexpr bool kChecksGuests = false;
#else
inline constexpr bool kChecksGuests = true;
#endif

// Tells the fault handler: the guest has made `call` in a way that the engine does not allow.
void ReportFault(const char* call, const char* fault);

// `holds` is what the contract asks for.
inline void CheckGuest(bool holds, const char* call, const char* fault) {
  if (kChecksGuests && !holds) ReportFault(call, fault);
}

}  // namespace ORVANE
