#include "velamo/editing/stitch_edits.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "velamo/editing/edited_stitches.h"
#include "velamo/editing/fail_edit.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

using Stitches = std::vector<VLMStitch>;
using Threads = std::vector<VLMThread>;

bool isColorChange(const VLMStitch& stitch) noexcept {
    return stitch.isColorChange();
}

bool sewsNothing(const VLMStitch& stitch) noexcept {
    return stitch.isJumpStitch() || stitch.isNullStitch();
}

/// The design's stitches without the selected ones; jumps bridge the gaps.
Stitches withoutSelected(const VLMDesign& design) {
    Stitches kept;
    kept.reserve(design.stitches().size());
    EditedStitches edited(kept);
    DesignPoint place;
    std::optional<DesignPoint> gap;  // where it begins
    for (VLMStitch stitch : design.stitches()) {
        const DesignPoint end = endOf(place, stitch);
        if (stitch.isSelected()) {
            if (!gap) gap = place;
            if (stitch.isColorChange()) {
                stitch.setDeltaX(0);
                stitch.setDeltaY(0);
                edited.append(stitch);
            }
        } else {
            if (gap) edited.appendJumpBefore(stitch, place - *gap);
            gap.reset();
            edited.append(stitch);
        }
        place = end;
    }
    return kept;
}

/// A design's lists while its colour blocks are looked through.
struct Blocks {
    Stitches stitches;
    Threads threads;
};

/// Lets the block of a colour change join the one before: the change goes, or remains as a stitch where it moves.
void appendJoined(Stitches& stitches, VLMStitch change) {
    change.setIsColorChange(false);
    if (!change.isNullStitch()) stitches.push_back(change);
}

/// Blocks behind the first in which nothing is sewn behind their colour change are joined to the one before, and their
/// threads go.
Blocks withoutEmptyInnerBlocks(const Stitches& stitches, const ThreadList& threads) {
    Blocks kept;
    kept.stitches.reserve(stitches.size());
    kept.threads.reserve(threads.size());
    auto next = std::find_if(stitches.begin(), stitches.end(), isColorChange);
    kept.stitches.insert(kept.stitches.end(), stitches.begin(), next);
    std::size_t thread = 0;
    const auto keepThread = [&] {
        if (thread < threads.size()) kept.threads.push_back(threads[thread]);
    };
    for (keepThread(); next != stitches.end();) {
        const auto change = next;
        next = std::find_if(change + 1, stitches.end(), isColorChange);
        ++thread;
        if (std::all_of(change + 1, next, sewsNothing)) {
            appendJoined(kept.stitches, *change);
        } else {
            kept.stitches.push_back(*change);
            keepThread();
        }
        kept.stitches.insert(kept.stitches.end(), change + 1, next);
    }
    while (++thread < threads.size()) keepThread();
    return kept;
}

/// The same for the first block; its thread goes, and the next one becomes the first.
void removeEmptyFirstBlock(Blocks& blocks) {
    const auto change = std::find_if(blocks.stitches.begin(), blocks.stitches.end(), isColorChange);
    if (change == blocks.stitches.end() || !std::all_of(blocks.stitches.begin(), change, sewsNothing)) return;
    change->setIsColorChange(false);
    if (change->isNullStitch()) blocks.stitches.erase(change);
    if (!blocks.threads.empty()) blocks.threads.erase(blocks.threads.begin());
}

void setBoundsOfNothing(VLMDesign& design) noexcept {
    constexpr float half = 100;
    design.setXMin(-half);
    design.setYMin(-half);
    design.setXMax(half);
    design.setYMax(half);
}

/// The first stitch at which the number of colour changes up to it, itself included, is `count`.
template <class Iterator>
Iterator firstInBlock(Iterator first, Iterator end, std::int64_t count) {
    std::int64_t changes = 0;
    return std::find_if(first, end,
                        [&](const VLMStitch& stitch) { return (changes += stitch.isColorChange()) == count; });
}

bool isThread(const VLMDesign& design, std::int32_t index) noexcept {
    return index >= 0 && index < design.numberOfThreads();
}

DesignPoint placeBefore(Stitches::const_iterator first, Stitches::const_iterator end) {
    DesignPoint place;
    for (; first != end; ++first) place = endOf(place, *first);
    return place;
}

/// A colour block that was taken out of the stitches, and what is left.
struct TakenBlock {
    Stitches block;
    Stitches rest;  // a jump bridges the gap
    DesignPoint start;
    DesignPoint end;
};

TakenBlock takeBlock(const Stitches& stitches, std::int32_t index) {
    TakenBlock taken;
    const auto first = firstInBlock(stitches.begin(), stitches.end(), index);
    const auto last = first == stitches.end() ? first : std::find_if(first + 1, stitches.end(), isColorChange);
    taken.block.assign(first, last);
    for (VLMStitch& stitch : taken.block) stitch.setIsColorChange(false);
    taken.start = placeBefore(stitches.begin(), first);
    taken.end = taken.start;
    for (const VLMStitch& stitch : taken.block) taken.end = endOf(taken.end, stitch);
    taken.rest.reserve(stitches.size() + 3);
    taken.rest.assign(stitches.begin(), first);
    if (last == stitches.end()) return taken;
    VLMStitch bridge = jumpAlong(taken.end - taken.start);
    bridge.setIsColorChange(last->isColorChange());
    taken.rest.push_back(bridge);
    taken.rest.insert(taken.rest.end(), last, stitches.end());
    taken.rest[taken.rest.size() - static_cast<std::size_t>(stitches.end() - last)].setIsColorChange(false);
    return taken;
}

/// Puts the block back so that it is the `to`-th one.
template <class Edited>
void appendMoved(Edited& edited, TakenBlock& taken, std::int32_t to) {
    Stitches& rest = taken.rest;
    if (!rest.empty()) rest.front().setIsColorChange(true);  // as the beginning of the block 0
    const auto target = firstInBlock(rest.begin(), rest.end(), std::int64_t{to} + 1);
    const DesignPoint place = placeBefore(rest.begin(), target);
    const bool isFirst = to == 0;
    if (!rest.empty()) rest.front().setIsColorChange(isFirst);
    taken.block.front().setIsColorChange(!isFirst);
    edited.append(rest.begin(), target);
    edited.append(jumpAlong(taken.start - place));
    edited.append(taken.block.begin(), taken.block.end());
    edited.append(jumpAlong(place - taken.end));
    edited.append(target, rest.end());
}

void moveThread(Threads& threads, std::int32_t from, std::int32_t to) {
    const auto first = threads.begin() + std::min(from, to);
    const auto end = threads.begin() + std::max(from, to) + 1;
    std::rotate(first, from < to ? first + 1 : end - 1, end);
}

bool replaceBy(const Stitches& stitches, VLMDesign& design, VLMError* error) {
    return replaceStitches(
        design, [&](auto& edited) { edited.append(stitches.begin(), stitches.end()); }, error);
}

}  // namespace

std::int32_t insertJumpatIndex(VLMDesign& design, DesignPoint vector, std::int32_t index) noexcept {
    const bool isThere = index >= 0 && static_cast<std::size_t>(index) < design.stitches().size();
    std::int32_t newIndex = index;
    static_cast<void>(operation(nullptr, [&] {
        if (!isThere) return true;
        auto& stitches = design.stitches().all();
        const auto position = static_cast<std::size_t>(index);
        const VLMStitch next = stitches[position];
        Stitches inserted{jumpAlong(vector)};
        if (needsTie(index > 0 && stitches[position - 1].isJumpStitch(), next)) inserted.push_back(tieBefore(next));
        stitches.insert(stitches.begin() + index, inserted.begin(), inserted.end());
        newIndex += static_cast<std::int32_t>(inserted.size());
        return true;
    }));
    return newIndex;
}

bool deleteSelection(VLMDesign& design, VLMError* error) noexcept {
    return operation(error, [&] {
        Blocks kept = withoutEmptyInnerBlocks(withoutSelected(design), design.threads());
        removeEmptyFirstBlock(kept);
        if (!replaceBy(kept.stitches, design, error)) return false;
        if (design.stitches().empty()) {
            kept.threads.clear();
            setBoundsOfNothing(design);
        }
        design.threads().all().swap(kept.threads);
        return true;
    });
}

bool switchSelectionToJumpserror(VLMDesign& design, bool toJumps, VLMError* error) noexcept {
    return operation(error, [&] {
        Stitches stitches = std::as_const(design).stitches().all();
        for (VLMStitch& stitch : stitches)
            if (stitch.isSelected()) stitch.setIsJumpStitch(toJumps);
        return replaceBy(stitches, design, error);
    });
}

bool insertThreadBeforeSelection(VLMDesign& design, VLMError* error) noexcept {
    return operation(error, [&] {
        if (!design.selectionActive()) return true;
        Stitches stitches = std::as_const(design).stitches().all();
        Threads threads = std::as_const(design).threads().all();
        const auto first =
            std::find_if(stitches.begin(), stitches.end(), [](const VLMStitch& stitch) { return stitch.isSelected(); });
        if (first != stitches.end()) {
            const auto block = std::count_if(stitches.begin(), first + 1, isColorChange);
            if (static_cast<std::size_t>(block) >= threads.size()) return failEdit(EditFailure::tooFewThreads, error);
            first->setIsColorChange(true);
            threads.insert(threads.begin() + block, VLMThread(threads[static_cast<std::size_t>(block)]));
        }
        if (!replaceBy(stitches, design, error)) return false;
        design.threads().all().swap(threads);
        return true;
    });
}

bool deleteThreadAtIndexerror(VLMDesign& design, std::int32_t index, VLMError* error) noexcept {
    return operation(error, [&] {
        if (!isThread(design, index)) return true;
        Stitches stitches = std::as_const(design).stitches().all();
        const auto first = firstInBlock(stitches.begin(), stitches.end(), index);
        const bool isFound = first != stitches.end();
        if (isFound) first->setIsColorChange(false);
        if (!replaceBy(stitches, design, error)) return false;
        auto& threads = design.threads().all();
        if (isFound) threads.erase(threads.begin() + index);
        return true;
    });
}

bool moveThreadFromIndextoIndexerror(VLMDesign& design, std::int32_t from, std::int32_t to, VLMError* error) noexcept {
    return operation(error, [&] {
        if (!isThread(design, from) || !isThread(design, to) || from == to) return true;
        TakenBlock taken = takeBlock(std::as_const(design).stitches().all(), from);
        if (taken.block.empty()) return true;
        if (!replaceStitches(
                design, [&](auto& edited) { appendMoved(edited, taken, to); }, error))
            return false;
        moveThread(design.threads().all(), from, to);
        return true;
    });
}

}  // namespace velamo
