/* kvoimage: statistics and files of 8-bit mono images, rows from top to bottom without padding. */
#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KvoStatistics
{
    int minimum;
    int maximum;
    double mean;
} KvoStatistics;

/* All fields are 0 for count 0. */
KvoStatistics kvoStatistics(const unsigned char* pixels, size_t count);

/* Writes a binary PGM file, replacing an existing one; path is UTF-8. Returns 1, or 0 when the file
   could not be written, in which case a part of it may be left. */
int kvoWritePgm(const char* path, const unsigned char* pixels, int width, int height);

#ifdef __cplusplus
}
#endif
