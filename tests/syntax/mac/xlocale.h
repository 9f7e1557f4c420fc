// The calls with a locale of their own, which are published here on macOS, and which libc++ uses.
#ifndef OSTREL_TESTS_SYNTAX_XLOCALE_H
#define OSTREL_TESTS_SYNTAX_XLOCALE_H

#include <ctype.h>
#undef isdigit_l // the functions take any locale, null too
#undef isxdigit_l
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <wchar.h>
#include <wctype.h>

extern "C" {
int snprintf_l(char*, size_t, locale_t, const char*, ...);
int asprintf_l(char**, locale_t, const char*, ...);
int sscanf_l(const char*, locale_t, const char*, ...);
int mbtowc_l(wchar_t*, const char*, size_t, locale_t);
wint_t btowc_l(int, locale_t);
int wctob_l(wint_t, locale_t);
size_t wcsnrtombs_l(char*, const wchar_t**, size_t, size_t, mbstate_t*, locale_t);
size_t wcrtomb_l(char*, wchar_t, mbstate_t*, locale_t);
size_t mbsnrtowcs_l(wchar_t*, const char**, size_t, size_t, mbstate_t*, locale_t);
size_t mbrtowc_l(wchar_t*, const char*, size_t, mbstate_t*, locale_t);
size_t mbrlen_l(const char*, size_t, mbstate_t*, locale_t);
size_t mbsrtowcs_l(wchar_t*, const char**, size_t, mbstate_t*, locale_t);
struct lconv* localeconv_l(locale_t);
extern int mb_cur_max_of(locale_t);
}
#define MB_CUR_MAX_L(locale) mb_cur_max_of(locale)

#endif
