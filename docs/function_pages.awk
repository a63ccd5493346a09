# Makes a manual page per function from the page of a family, as Doxygen writes it:
#   awk -v version=8.1.1 -f function_pages.awk DIRECTORY/man3/zspsc_g726.3 ...
# The new pages lie beside the old ones and refer to them.

function finish() {
    if (!page) return
    printf ".SH SEE ALSO\n.BR %s (3)\n", family >page
    close(page)
    page = ""
}

FNR == 1 {
    finish()
    family = FILENAME
    sub(/.*\//, "", family)
    sub(/\.3$/, "", family)
    inside = 0
}

/^\.SH / {
    finish()
    inside = $0 ~ /Function Documentation/
    next
}

# .SS "\fBZspStatus\fP zspsName (const int16_t * src, int32_t len)"
inside && /^\.SS "/ {
    finish()
    prototype = $0
    sub(/^\.SS "/, "", prototype)
    sub(/"$/, "", prototype)
    gsub(/\\f[BIPR]/, "", prototype)
    gsub(/\* /, "*", prototype)
    sub(/ \(/, "(", prototype)
    name = prototype
    sub(/\(.*/, "", name)
    sub(/.*[ *]/, "", name)
    page = FILENAME
    sub(/[^\/]*$/, name ".3", page)
    header = name ~ /^zspv/ ? "zspvoice.h" : "zspsc.h"
    first = 1
    next
}

# The first sentence says what the function is for.
page && first {
    first = 0
    brief = $0
    sub(/\\&\. *$/, "", brief)
    printf ".TH %s 3 \"\" \"zspsc %s\" \"zspsc\"\n.ad l\n.nh\n", name, version >page
    printf ".SH NAME\n%s \\- %s\n", name, brief >page
    printf ".SH SYNOPSIS\n.nf\n#include <%s>\n.fi\n.PP\n.HP\n%s;\n", header, prototype >page
    printf ".SH DESCRIPTION\n%s\n", $0 >page
    next
}

page { print >page }

END { finish() }
