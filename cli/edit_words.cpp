#include "cli/edit_words.h"

#include <array>

#include "cli/design_json.h"
#include "velamo/editing/append.h"
#include "velamo/editing/basting.h"
#include "velamo/editing/fail_edit.h"
#include "velamo/editing/optimize.h"
#include "velamo/editing/selection.h"
#include "velamo/editing/stitch_edits.h"
#include "velamo/editing/transform.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

using Arguments = EditArguments;

/// True, or a refusal with the error that the edit gives.
template <class Edit>
EditCommand edit(Edit edit) {
    return [edit](VLMDesign& design, const DesignSource&) -> Json {
        VLMError error;
        if (!edit(design, &error)) throw EditRefusal(std::move(error));
        return true;
    };
}

/// A command without a result.
template <class Change>
EditCommand change(Change change) {
    return [change](VLMDesign& design, const DesignSource&) -> Json {
        change(design);
        return nullptr;
    };
}

/// A command whose result is what it finds.
template <class Find>
EditCommand find(Find find) {
    return [find](VLMDesign& design, const DesignSource&) -> Json { return find(design); };
}

DesignPoint pointOf(const Arguments& arguments) {
    return {arguments.real(0), arguments.real(1)};
}

Json rectJson(const DesignRect& rect) {
    return Json::array({jsonNumber(rect.x), jsonNumber(rect.y), jsonNumber(rect.width), jsonNumber(rect.height)});
}

/// A command for what is hit at a place: OPERATION(design, place, tolerance).
template <class Operation>
EditCommand findAt(const Arguments& arguments, Operation operation) {
    return find([point = pointOf(arguments), tolerance = arguments.single(2), operation](const VLMDesign& design) {
        return operation(design, point, tolerance);
    });
}

/// The same where what is hit is selected: OPERATION(design, place, tolerance, unselectMode).
template <class Operation>
EditCommand selectAt(const Arguments& arguments, Operation operation) {
    return change([point = pointOf(arguments), tolerance = arguments.single(2), unselects = arguments.isGiven(3),
                   operation](VLMDesign& design) { operation(design, point, tolerance, unselects); });
}

EditCommand parseSelectRect(const Arguments& arguments) {
    const DesignRect rect{arguments.real(0), arguments.real(1), arguments.real(2), arguments.real(3)};
    return change([rect, unselects = arguments.isGiven(4)](VLMDesign& design) {
        selectInRectunselectMode(design, rect, unselects);
    });
}

EditCommand parseOptimize(const Arguments& arguments) {
    return [type = arguments.text(0)](VLMDesign& design, const DesignSource&) -> Json {
        VLMError error;
        if (!optimizeJumpsFor(design, type)) {
            failEdit(EditFailure::movesTooLarge, &error);
            throw EditRefusal(std::move(error));
        }
        return nullptr;
    };
}

EditCommand parseAppend(const Arguments& arguments) {
    return [file = arguments.text(0)](VLMDesign& design, const DesignSource& source) -> Json {
        VLMDesign other;
        VLMError error;
        if (!source(other, file, &error)) throw EditRefusal(std::move(error), file);
        if (!appendDesignerror(design, other, &error)) throw EditRefusal(std::move(error));
        return true;
    };
}

std::int32_t threadOf(const VLMDesign& design, std::int32_t index) {
    if (index >= 0 && index < design.numberOfThreads()) return index;
    throw EditSyntaxError("there is no thread " + std::to_string(index) + "; the design has " +
                          std::to_string(design.numberOfThreads()) + ", counted from 0");
}

EditCommand parseRecolor(const Arguments& arguments) {
    const auto color = VLMColor::initWithRedgreenblue(arguments.share(1), arguments.share(2), arguments.share(3));
    return find([index = arguments.integer(0), color, palette = arguments.text(4)](VLMDesign& design) {
        return design.changeThreadtoColorinPalette(threadOf(design, index), color, palette);
    });
}

EditCommand parseShowThread(const Arguments& arguments) {
    return change([index = arguments.integer(0), isShown = arguments.isOn(1)](VLMDesign& design) {
        design.setIsShownofThread(isShown, threadOf(design, index));
    });
}

EditCommand parseHoop(const Arguments& arguments) {
    return find([vendor = arguments.text(0), code = arguments.integer(1)](VLMDesign& design) {
        return design.setHoopFromVendorwithCode(vendor, code);
    });
}

/// The catalogue's hoop of a vendor and code; wrong usage when there is none.
HoopHandle hoopOf(const Arguments& arguments) {
    VLMDesign design;
    if (design.setHoopFromVendorwithCode(arguments.text(0), arguments.integer(1))) return design.designHoop();
    throw EditSyntaxError("there is no hoop " + arguments.text(1) + " of '" + arguments.text(0) +
                          "'; 'velamo hoops' lists them");
}

constexpr std::array<EditWord, 35> words{{
    {"select-all", "", "select every stitch", "select-all", [](const Arguments&) { return change(selectAll); }},
    {"deselect-all", "", "select none", "deselect-all", [](const Arguments&) { return change(deselectAll); }},
    {"invert", "", "select the stitches that are not selected, and only those", "invert",
     [](const Arguments&) { return change(invertAll); }},
    {"select-rect", "X Y W H [unselect]",
     "select the stitches with both ends in the rectangle, whose lower left corner is X Y (tenths of a millimetre, as "
     "all places); 'unselect' takes them out of the selection",
     "select-rect -100 -100 200 100", parseSelectRect},
    {"select-stitch", "X Y TOL [unselect]",
     "select the last stitch whose squared distance from X Y is less than TOL; 4 reaches 0.2 mm",
     "select-stitch 12.5 -40 4",
     [](const Arguments& given) { return selectAt(given, selectStitchAtwithToleranceunselectMode); }},
    {"select-block", "X Y TOL [unselect]", "select the run of stitches between jumps and colour changes at X Y",
     "select-block 12.5 -40 4 unselect",
     [](const Arguments& given) { return selectAt(given, selectBlockAtwithToleranceunselectMode); }},
    {"selection-rect", "", "[x, y, width, height] of the selection, of the design while nothing is selected",
     "selection-rect",
     [](const Arguments&) { return find([](const VLMDesign& design) { return rectJson(selectionRect(design)); }); }},
    {"stitch-at", "X Y TOL", "the index of the stitch at X Y, or -1", "stitch-at 12.5 -40 4",
     [](const Arguments& given) { return findAt(given, indexOfStitchAtwithTolerance); }},
    {"thread-at", "X Y TOL", "the index of the thread at X Y, or -1", "thread-at 12.5 -40 4",
     [](const Arguments& given) { return findAt(given, indexOfThreadAtwithTolerance); }},
    {"is-selected-at", "X Y TOL", "whether the stitch at X Y is selected", "is-selected-at 12.5 -40 4",
     [](const Arguments& given) { return findAt(given, isSelectedAtwithTolerance); }},
    {"center", "", "move the design so that its middle is the origin", "center",
     [](const Arguments&) { return edit(centerDesign); }},
    {"move", "DX DY", "move the selection", "move 50 -20",
     [](const Arguments& given) {
         return edit([vector = pointOf(given)](VLMDesign& design, VLMError* error) {
             return moveSelectionByVectorerror(design, vector, error);
         });
     }},
    {"rotate", "DEGREES", "turn the selection counter-clockwise about its middle", "rotate 45",
     [](const Arguments& given) {
         return edit([degrees = given.integer(0)](VLMDesign& design, VLMError* error) {
             return rotateSelectionByDegreeserror(design, degrees, error);
         });
     }},
    {"resize", "FACTOR", "resize the selection; 1.5 makes it larger by half", "resize 1.5",
     [](const Arguments& given) {
         return edit([factor = given.single(0)](VLMDesign& design, VLMError* error) {
             return resizeSelectionByPercenterror(design, factor, error);
         });
     }},
    {"flip", "V|H", "mirror the selection about the vertical (V) or horizontal (H) line through its middle", "flip V",
     [](const Arguments& given) {
         return edit([orientation = given.text(0)](VLMDesign& design, VLMError* error) {
             return flipSelectionerror(design, orientation, error);
         });
     }},
    {"delete", "", "delete the selected stitches, and the threads that sew nothing any more", "delete",
     [](const Arguments&) { return edit(deleteSelection); }},
    {"jumps", "on|off", "make the selected stitches jumps, or jumps stitches", "jumps on",
     [](const Arguments& given) {
         return edit([isOn = given.isOn(0)](VLMDesign& design, VLMError* error) {
             return switchSelectionToJumpserror(design, isOn, error);
         });
     }},
    {"split-thread", "", "let a new colour block begin at the first selected stitch", "split-thread",
     [](const Arguments&) { return edit(insertThreadBeforeSelection); }},
    {"delete-thread", "I", "delete the thread I, counted from 0; its block joins the one before", "delete-thread 1",
     [](const Arguments& given) {
         return edit([index = given.integer(0)](VLMDesign& design, VLMError* error) {
             return deleteThreadAtIndexerror(design, index, error);
         });
     }},
    {"move-thread", "FROM TO", "sew the thread FROM at the place TO in the order", "move-thread 2 0",
     [](const Arguments& given) {
         return edit([from = given.integer(0), to = given.integer(1)](VLMDesign& design, VLMError* error) {
             return moveThreadFromIndextoIndexerror(design, from, to, error);
         });
     }},
    {"insert-jump", "DX DY I", "insert a jump before the stitch I; the stitch's new index", "insert-jump 10 0 25",
     [](const Arguments& given) {
         return find([vector = pointOf(given), index = given.integer(2)](VLMDesign& design) {
             return insertJumpatIndex(design, vector, index);
         });
     }},
    {"optimize", "TYPE", "merge jumps and cut long moves as designs of the type need it", "optimize DST",
     parseOptimize},
    {"trim", "", "take jumps at both ends of the selection out of it; whether there were any", "trim",
     [](const Arguments&) { return find(trimSelectedJumps); }},
    {"baste", "LENGTH DISTANCE", "sew a frame around the design first: length of its stitches and distance, in mm",
     "baste 5 3",
     [](const Arguments& given) {
         return edit([length = given.single(0), distance = given.single(1)](VLMDesign& design, VLMError* error) {
             return addBastingWithLengthinDistanceerror(design, length, distance, error);
         });
     }},
    {"append", "FILE", "sew the design in FILE behind this one, 1 mm right and down", "append leaf.dst", parseAppend},
    {"recolor", "I R G B PALETTE",
     "give the thread I, counted from 0, the nearest colour of PALETTE, or the colour itself where it is \"\"; R G B "
     "from 0 to 1",
     "recolor 0 1 0.5 0 Janome", parseRecolor},
    {"show-thread", "I on|off", "show or hide the thread I in pictures", "show-thread 0 off", parseShowThread},
    {"hoop", "VENDOR CODE", "give the design a hoop; the code -1 takes it away. True when there is such a hoop",
     "hoop Janome 28", parseHoop},
    {"find-hoop", "VENDOR", "the vendor's first hoop that the design fits in; the design is not given it",
     "find-hoop Janome",
     [](const Arguments& given) {
         return find(
             [vendor = given.text(0)](const VLMDesign& design) { return hoopJson(design.findHoopFromVendor(vendor)); });
     }},
    {"fits", "VENDOR CODE", "whether the design is at most as large as the hoop", "fits Pfaff 3",
     [](const Arguments& given) {
         return find([hoop = hoopOf(given)](const VLMDesign& design) { return design.designFitsInHoop(*hoop); });
     }},
    {"outside", "VENDOR CODE", "whether something lies outside the hoop, its middle being at the origin",
     "outside Janome 4",
     [](const Arguments& given) {
         return find([hoop = hoopOf(given)](const VLMDesign& design) { return design.stitchesOutsideOfHoop(*hoop); });
     }},
    {"thread-file", "on|off", "whether the design's threads are kept in a side file", "thread-file on",
     [](const Arguments& given) {
         return change([isOn = given.isOn(0)](VLMDesign& design) { design.setUseThreadFile(isOn); });
     }},
    {"type", "TYPE", "set the design's type, whose limits edits keep to", "type PES",
     [](const Arguments& given) {
         return change([type = given.text(0)](VLMDesign& design) { design.setDesignType(type); });
     }},
    {"version", "N", "set the design's version, ten times the one shown", "version 10",
     [](const Arguments& given) {
         return change([version = given.integer(0)](VLMDesign& design) { design.setDesignVersion(version); });
     }},
    {"range", "LOCATION LENGTH", "which stitches pictures show", "range 0 1000",
     [](const Arguments& given) {
         return change([range = StitchRange{given.natural(0), given.natural(1)}](VLMDesign& design) {
             design.setDisplayRange(range);
         });
     }},
}};

}  // namespace

std::span<const EditWord> editWords() noexcept {
    return words;
}

}  // namespace velamo
