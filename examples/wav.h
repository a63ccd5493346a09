/* Reads the file that an example was given on its command line. */
#ifndef WAV_H
#define WAV_H

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static unsigned littleEndian(const unsigned char* bytes, int count)
{
    unsigned value = 0;
    while (count-- > 0)
        value = value << 8 | bytes[count];
    return value;
}

/* The samples of a WAV file of 16-bit mono PCM at a rate; the program ends if it is another. Files
 * that were written to a pipe, whose lengths are too large, are read to their end. */
static int16_t* readWav(const char* path, unsigned rate, int* count)
{
    unsigned char head[12], format[16] = {0};
    size_t capacity = 0, bytes = 0, got = 1;
    unsigned char* data = NULL;
    int16_t* samples;
    FILE* file = fopen(path, "rb");
    if (!file || fread(head, 1, 12, file) != 12 || memcmp(head + 8, "WAVE", 4) != 0) {
        fprintf(stderr, "%s: not a WAV file\n", path);
        exit(1);
    }
    while (fread(head, 1, 8, file) == 8 && memcmp(head, "data", 4) != 0) {
        const unsigned length = littleEndian(head + 4, 4);
        const int isFormat = memcmp(head, "fmt ", 4) == 0 && length >= 16;
        if (isFormat && fread(format, 1, 16, file) != 16) break;
        if (fseek(file, (long)((length + 1) / 2 * 2 - (isFormat ? 16 : 0)), SEEK_CUR) != 0) break;
    }
    if (littleEndian(format, 2) != 1 || littleEndian(format + 2, 2) != 1 ||
        littleEndian(format + 4, 4) != rate || littleEndian(format + 14, 2) != 16) {
        fprintf(stderr, "%s: not 16-bit mono PCM at %u Hz\n", path, rate);
        exit(1);
    }
    while (got > 0 && bytes < littleEndian(head + 4, 4)) {
        if (bytes == capacity) {
            capacity = capacity * 2 + 65536;
            data = (unsigned char*)realloc(data, capacity);
            if (!data) exit(1);
        }
        got = fread(data + bytes, 1, capacity - bytes, file);
        bytes += got;
    }
    fclose(file);
    if (bytes > littleEndian(head + 4, 4)) bytes = littleEndian(head + 4, 4);

    *count = (int)(bytes / 2);
    samples = (int16_t*)malloc(bytes + 2);
    if (!samples) exit(1);
    for (size_t i = 0; i < bytes / 2; ++i)
        samples[i] = (int16_t)littleEndian(data + 2 * i, 2);
    free(data);
    return samples;
}

#endif
