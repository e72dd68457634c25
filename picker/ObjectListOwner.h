// ObjectListOwner.h: what the object picker needs of the editor that opens it.
#ifndef ORVO_PICKER_OBJECTLISTOWNER_H
#define ORVO_PICKER_OBJECTLISTOWNER_H

class CMDArray;

namespace orvo {

/// An editor whose catalogue the picker may copy. The tables are the editor's and are only read;
/// null: the editor has no such table.
class ObjectListOwner {
public:
    virtual const CMDArray* resourceTable() const = 0;
    virtual const CMDArray* resourceFolderTable() const = 0;

protected:
    ~ObjectListOwner() = default;
};

} // namespace orvo

#endif
