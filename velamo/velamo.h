#pragma once

/// Includes the whole library. Where to start:
///
/// - a design: VLMDesign (model/design.h), with its stitches (model/stitch.h), threads (model/thread.h) and hoop
///   (model/hoop.h)
/// - bytes to a design: importDesignFromURLerror, importDesignFromBytes (formats/import.h); its figures alone:
///   attributesOfFile, attributesOfBytes (formats/design_attributes.h)
/// - changing it: editing/selection.h chooses stitches; editing/transform.h, editing/stitch_edits.h, editing/append.h
///   and editing/basting.h change them
/// - looking at it: thumbnailOf (render/thumbnail.h); bitmapOf, svgOf and pdfOf (render/design_picture.h); NeedleWalk
///   (model/needle_walk.h) follows its moves
/// - a design to bytes: exportDesignToURLerror, exportDesignToBytes (formats/export.h)
/// - what is available: allFormats (formats/format.h), paletteNames (model/palettes.h), VLMDesign::hoops
///
/// Operations return whether they succeeded. On failure they fill a VLMError (model/error.h); pass null to do without
/// it. Running out of memory is a failure too, with the code ENOMEM of the system's domain. A function that is not
/// noexcept may throw std::bad_alloc; its comment names what else it may throw. A function that uses palettes, texts in
/// the user's language or the user's preferences may also throw std::system_error: when the system fails to read one of
/// these files although it exists and the user may read it.
///
/// Lengths are in tenths of a millimetre, y upward, unless a name or a comment says otherwise. Texts are UTF-8. A
/// design must be used by one thread of execution at a time; different designs may be used at the same time.

#include "velamo/editing/append.h"
#include "velamo/editing/basting.h"
#include "velamo/editing/edit_error.h"
#include "velamo/editing/optimize.h"
#include "velamo/editing/selection.h"
#include "velamo/editing/stitch_edits.h"
#include "velamo/editing/transform.h"
#include "velamo/formats/design_attributes.h"
#include "velamo/formats/export.h"
#include "velamo/formats/format.h"
#include "velamo/formats/import.h"
#include "velamo/formats/thread_file.h"
#include "velamo/measure/value_transformer.h"
#include "velamo/model/color.h"
#include "velamo/model/color_list.h"
#include "velamo/model/design.h"
#include "velamo/model/error.h"
#include "velamo/model/hoop.h"
#include "velamo/model/needle_walk.h"
#include "velamo/model/palettes.h"
#include "velamo/model/stitch.h"
#include "velamo/model/thread.h"
#include "velamo/platform/graphics/bitmap.h"
#include "velamo/platform/graphics/graphics_context.h"
#include "velamo/platform/graphics/vector_picture.h"
#include "velamo/render/design_picture.h"
#include "velamo/render/draw_design.h"
#include "velamo/render/thumbnail.h"
