#pragma once

/// All of the library, for whoever would rather not choose. Where to start:
///
/// - a design: VLMDesign (model/design.h), with its stitches (model/stitch.h), threads (model/thread.h) and hoop
///   (model/hoop.h)
/// - bytes to a design: importDesignFromURLerror, importDesignFromBytes (formats/import.h); only its figures:
///   attributesOfFile, attributesOfBytes (formats/design_attributes.h)
/// - changing it: editing/selection.h chooses stitches; editing/transform.h, editing/stitch_edits.h, editing/append.h
/// and
///   editing/basting.h change them
/// - looking at it: thumbnailOf (render/thumbnail.h); bitmapOf, svgOf and pdfOf (render/design_picture.h); NeedleWalk
///   (model/needle_walk.h) goes along its moves
/// - a design to bytes: exportDesignToURLerror, exportDesignToBytes (formats/export.h)
/// - what there is: allFormats (formats/format.h), paletteNames (model/palettes.h), VLMDesign::hoops
///
/// Operations return whether they succeeded and fill a VLMError (model/error.h), which may be left out. Lengths are in
/// tenths of a millimetre, y upward, unless a name says otherwise. Texts are UTF-8. One thread of execution uses a
/// design at a time; different designs need no care.

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
