// As on every Mac, whatever processor glibc's own headers are installed for.
#define __WORDSIZE 64
#define __WORDSIZE_TIME64_COMPAT32 1
#define __SYSCALL_WORDSIZE 64
