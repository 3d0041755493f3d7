#pragma once

namespace inkory
{

class UndoManager;

/// What a stamp knows of the view that made it.
class StampHost
{
public:
    virtual ~StampHost() = default;

    /// Where the stamp's changes are registered; none when the view stands in no document window.
    virtual UndoManager *undoManager() const = 0;
};

} // namespace inkory
