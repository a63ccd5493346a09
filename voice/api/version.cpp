// Version of the library and texts of the statuses.

#include "zspvoice.h"

int32_t zspvGetVersion(void)
{
    return ZSPVOICE_VERSION_MAJOR * 10000 + ZSPVOICE_VERSION_MINOR * 100 + ZSPVOICE_VERSION_PATCH;
}

const char* zspvStatusText(ZspStatus status)
{
    switch (status) {
    case zspStsOverflow:
        return "Done, but something did not fit.";
    case zspStsNoErr:
        return "Success.";
    case zspStsInternalErr:
        return "An internal step failed.";
    case zspStsBadArgErr:
        return "An argument is outside its domain.";
    case zspStsSizeErr:
        return "A length, a capacity or the size of a record is not accepted.";
    case zspStsRangeErr:
        return "A setting is outside its range.";
    case zspStsNullPtrErr:
        return "A required pointer is null.";
    case zspStsMemAllocErr:
        return "There is no memory.";
    case zspStsCodecRangeErr:
        return "A frame, a kind or a mode that the codec does not have.";
    case zspStsNegativeValueErr:
        return "A value that must not be negative is.";
    case zspStsScaleRangeErr:
        return "A scale factor or shift is outside its range.";
    case zspStsLSPConvErr:
        return "Not all line spectral pairs were found.";
    case zspStsFIRLenErr:
        return "A filter length is outside its range.";
    }
    return "Not a status of this library.";
}
