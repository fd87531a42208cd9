// Memory that runs out at any moment: what was asked for fails and says so, or is done nevertheless; nothing is lost,
// and nothing escapes.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "tests/faults/failing_memory.h"
#include "tests/plugin/importer_module.h"
#include "tests/support/samples.h"
#include "tests/support/stitches.h"
#include "tests/support/temporary_folder.h"
#include "velamo/editing/append.h"
#include "velamo/editing/basting.h"
#include "velamo/editing/optimize.h"
#include "velamo/editing/selection.h"
#include "velamo/editing/stitch_edits.h"
#include "velamo/editing/transform.h"
#include "velamo/formats/export.h"
#include "velamo/formats/format.h"
#include "velamo/formats/import.h"
#include "velamo/platform/system/files.h"

namespace velamo {
namespace {

using namespace test;

/// Lets memory run out at each allocation in turn, from the first to the last that `act(state, error)` makes, which
/// says whether it was done. `prepare()` makes the state before, and `check(state, isDone)` looks at it afterwards,
/// both with as much memory as they like.
template <class Prepare, class Act, class Check>
void runOutOfMemory(Prepare prepare, Act act, Check check) {
    {
        auto state = prepare();
        VLMError error;
        ASSERT_TRUE(act(state, error)) << error.message();  // what is read once for all is there now
    }
    bool isOver = false;
    for (std::size_t allocations = 0; !isOver && !testing::Test::HasFailure(); ++allocations) {
        SCOPED_TRACE(allocations);
        const std::size_t live = liveAllocations();
        {
            auto state = prepare();
            VLMError error;
            bool isDone = false;
            {
                const FailingMemory failing(allocations);
                isDone = act(state, error);
                isOver = !FailingMemory::hasFailed();
            }
            EXPECT_TRUE(isDone || !isOver);
            EXPECT_EQ(error.code, isDone ? 0 : ENOMEM) << error.message();
            check(state, isDone);
        }
        EXPECT_EQ(liveAllocations(), live);
    }
}

class FormatMemory : public testing::TestWithParam<Format> {
protected:
    TemporaryFolder folder_;
    std::filesystem::path file_ =
        folder_.write("rose." + std::string(GetParam().extension), sampleFile(GetParam().extension));
};

TEST_P(FormatMemory, RunsOutDuringImport) {
    VLMDesign whole;
    ASSERT_TRUE(importDesignFromURLerror(whole, file_, nullptr));
    runOutOfMemory([] { return VLMDesign(); },
                   [&](VLMDesign& design, VLMError& error) { return importDesignFromURLerror(design, file_, &error); },
                   [&](const VLMDesign& design, bool isDone) {
                       if (!isDone) return;
                       EXPECT_EQ(design.stitches(), whole.stitches());
                       EXPECT_EQ(design.threads(), whole.threads());
                   });
}

VLMDesign smallDesign() {
    VLMDesign design = designOf({jump(-20, -5), selected(stitch(10, 5)), change(0, 0), selected(stitch(0, -10)),
                                 stitch(150, 3), stitch(-150, 20)});
    design.setXMax(140);
    return design;
}

TEST_P(FormatMemory, RunsOutDuringExport) {
    if (GetParam().writer == nullptr) return;
    const auto target = folder_.path() / ("leaf." + std::string(GetParam().extension));
    const ExportOptions options{.dateText = "20260401120000"};
    VLMDesign first = smallDesign();
    ASSERT_TRUE(exportDesignToURLerror(first, target, nullptr, options));
    const auto whole = readWholeFile(target);
    const Bytes old = bytes(1, 2, 3);
    runOutOfMemory(
        [&] {
            folder_.write(target.filename(), old);
            return smallDesign();
        },
        [&](VLMDesign& design, VLMError& error) { return exportDesignToURLerror(design, target, &error, options); },
        [&](const VLMDesign&, bool isDone) {
            EXPECT_EQ(readWholeFile(target), isDone ? whole : old);
            EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), 2);
        });
}

INSTANTIATE_TEST_SUITE_P(Each, FormatMemory, testing::ValuesIn(allFormats().begin(), allFormats().end()),
                         [](const auto& row) {
                             return std::string(row.param.type == "JEF+" ? "JEFPlus" : row.param.type);
                         });

struct EditRow {
    const char* name;
    bool (*edit)(VLMDesign& design, VLMError* error);
};
class EditMemory : public testing::TestWithParam<EditRow> {};

TEST_P(EditMemory, RunsOutAndLeavesTheDesign) {
    const VLMDesign former = smallDesign();
    runOutOfMemory(
        smallDesign, [&](VLMDesign& design, VLMError& error) { return GetParam().edit(design, &error); },
        [&](const VLMDesign& design, bool isDone) {
            if (isDone) return;
            EXPECT_EQ(design.stitches(), former.stitches());
            EXPECT_EQ(design.threads(), former.threads());
            EXPECT_EQ(boundsOf(design), boundsOf(former));
        });
}

INSTANTIATE_TEST_SUITE_P(
    Each, EditMemory,
    testing::Values(
        EditRow{"Move",
                [](VLMDesign& design, VLMError* error) {
                    return moveSelectionByVectorerror(design, {5, 5}, error);
                }},
        EditRow{"Rotate",
                [](VLMDesign& design, VLMError* error) { return rotateSelectionByDegreeserror(design, 30, error); }},
        EditRow{"Delete", deleteSelection}, EditRow{"Split", insertThreadBeforeSelection},
        EditRow{"Switch",
                [](VLMDesign& design, VLMError* error) { return switchSelectionToJumpserror(design, true, error); }},
        EditRow{"DeleteThread",
                [](VLMDesign& design, VLMError* error) { return deleteThreadAtIndexerror(design, 1, error); }},
        EditRow{"MoveThread", [](VLMDesign& design,
                                 VLMError* error) { return moveThreadFromIndextoIndexerror(design, 0, 1, error); }},
        EditRow{"Baste", [](VLMDesign& design,
                            VLMError* error) { return addBastingWithLengthinDistanceerror(design, 1, 1, error); }},
        EditRow{"Append", [](VLMDesign& design, VLMError* error) { return appendDesignerror(design, design, error); }}),
    [](const auto& row) { return row.param.name; });

TEST(PluginMemory, RunsOut) {
    const TemporaryFolder folder;
    const auto file = folder.write("rose.dst", sampleFile("dst"));
    const ImporterModule importer;
    const auto path = pathText(file);
    runOutOfMemory(
        emptyDictionary,
        [&](const Owned<CFMutableDictionaryRef>& attributes, VLMError& error) {
            const bool isDone = importer.getMetadata(nullptr, attributes.get(), nullptr, path.get()) != 0;
            error.code = isDone ? 0 : ENOMEM;  // the plug-in's interface has no errors
            return isDone;
        },
        [](const Owned<CFMutableDictionaryRef>& attributes, bool isDone) {
            EXPECT_EQ(CFDictionaryGetCount(attributes.get()), isDone ? 4 : 0);
        });
}

}  // namespace
}  // namespace velamo
