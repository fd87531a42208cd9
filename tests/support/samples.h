#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/support/brother_files.h"
#include "tests/support/dst.h"
#include "tests/support/janome_files.h"
#include "tests/support/pcs_file.h"
#include "tests/support/vp3_file.h"

namespace velamo::test {

/// A KSM file of the records.
inline Bytes ksmFile(const Bytes& records) {
    return bytes(repeated(512, 0x77), records);
}

/// A stitch, a colour change, a jump and a stitch in the stream that Janome files share.
inline const Bytes janomeSample = bytes(10, 5, 0x80, 1, 3, 4, 0x80, 2, 20, 0xEC, 0xF6, 0, janomeEnd);

/// A small valid file of the format, with two colour blocks and a jump where the format has such things.
inline Bytes sampleFile(std::string_view extension) {
    if (extension == "dst") return dstFile(bytes(0x81, 0, 0x03, 0, 0, 0xC3, 0x84, 1, 0x83, 2, 2, 0x03));
    if (extension == "exp") return bytes(10, 5, 0x80, 1, 0, 0, 0x80, 4, 20, 0xEC, 0xF6, 0);
    if (extension == "jef" || extension == "jef+")
        return jefFile({.indices = {5, 25}, .tensions = {7, 13}, .stream = janomeSample});
    if (extension == "jpx") return jpxFile({.indices = {5, 25}, .tensions = {7, 13}, .stream = janomeSample});
    if (extension == "sew") return sewFile({5, 25}, janomeSample);
    if (extension == "ksm")
        return ksmFile(bytes(5, 10, 0x98, 5, 5, 0x80, 0, 0, 0x8C, 9, 20, 0xB8, 4, 4, 0xE0, 0, 0, 0x88));
    if (extension == "pes") return pesFile();
    if (extension == "pec") return pecFile();
    if (extension == "vp3")
        return vp3File(
            {.sections = {{}, {.startX = 5000, .stitches = bytes(1, 2, 0x80, 1, 1, 0, 0xFF, 0, 0, 0, 9, 9)}}});
    if (extension == "pcs") return pcsFile();
    if (extension == "pcd") return pcdFile();
    if (extension == "pcq") return pcqFile();
    throw std::invalid_argument("no sample of format " + std::string(extension));
}

}  // namespace velamo::test
