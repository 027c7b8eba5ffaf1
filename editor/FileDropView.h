#pragma once

#include "editor/FlippedView.h"

#include <functional>

namespace velotrine {

/// An area on which somebody can drop a file, on whatever lies in it. Of several, the first counts.
class FileDropView : public FlippedView, public juce::FileDragAndDropTarget
{
public:
    std::function<void(const juce::File&)> onFileDropped;

    bool isInterestedInFileDrag(const juce::StringArray& files) override
    {
        return onFileDropped && !files.isEmpty();
    }

    void filesDropped(const juce::StringArray& files, int, int) override
    {
        onFileDropped(juce::File::getCurrentWorkingDirectory().getChildFile(files[0]));
    }
};

} // namespace velotrine
