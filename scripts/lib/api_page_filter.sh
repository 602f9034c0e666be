#!/bin/sh
# What Doxygen reads instead of a public header. The text that opens a header becomes the text of the
# file, and also of its class when that has none of its own.
exec awk '
    NR == 1 { print "/// @file" }
    !/^\/\/\// { opened = 1 }
    !opened { text = text $0 "\n" }
    /^(template|class ZAN_API|struct ZAN_API)/ && !done {
        if (previous !~ /^(\/\/\/|template)/) printf "%s", text
        done = !/^template/
    }
    # A percent sign would be taken for an escape, and a full stop for the end of the brief text.
    {
        previous = $0
        gsub(/`%`/, "<code>\\&#37;</code>")
        gsub(/`\.`/, "<code>\\&#46;</code>")
        print
    }
' "$1"
