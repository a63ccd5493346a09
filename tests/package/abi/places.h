/* Sizes and offsets of records as a compiler sees them and as they were promised. */
#ifndef PLACES_H
#define PLACES_H

#include <stddef.h>
#include <stdio.h>

struct Place {
    const char* what;
    size_t got, promised;
};

#define RECORD(record, size) {#record, sizeof(record), size},
#define FIELD(record, field, offset) {#record "." #field, offsetof(record, field), offset},

/* The number of places that are not as promised; each is printed. */
static int changedPlaces(const struct Place* places, size_t count)
{
    int changed = 0;
    for (size_t i = 0; i < count; ++i) {
        if (places[i].got == places[i].promised) continue;
        printf("%s: %zu instead of %zu\n", places[i].what, places[i].got, places[i].promised);
        ++changed;
    }
    return changed;
}

#endif
