#include <AvailabilityMacros.h>
