// To print the integers of stdint-intn.h.
#include_next <inttypes.h>

#undef PRId64
#undef PRIu64
#undef PRIx64
#define PRId64 "lld"
#define PRIu64 "llu"
#define PRIx64 "llx"
