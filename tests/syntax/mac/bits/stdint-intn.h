// On macOS the integers of 64 bits are long long, and so other types than size_t and long.
#ifndef _BITS_STDINT_INTN_H
#define _BITS_STDINT_INTN_H 1

typedef signed char int8_t;
typedef short int16_t;
typedef int int32_t;
typedef long long int64_t;

#endif
