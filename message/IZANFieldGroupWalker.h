/// `IZANFieldGroupWalker`: visits a field group and everything inside it, depth first, and calls
/// its own operations back for each group and each field.
///
/// Threads: none of its own; the group must not change while it is walked.
///
/// The order of the virtual operations is part of the contract. There is deliberately no virtual
/// destructor among them: a walker is a local object of its user and never deleted through this
/// class. Declare a walker `final`, so that compilers need not remind of that.
#ifndef ZANENGINE_MESSAGE_IZANFIELDGROUPWALKER_H
#define ZANENGINE_MESSAGE_IZANFIELDGROUPWALKER_H

#include "infra/Export.h"
#include "message/ZANField.h"
#include "message/ZANFieldGroup.h"

class ZAN_API IZANFieldGroupWalker {
public:
    IZANFieldGroupWalker() = default;
    IZANFieldGroupWalker(IZANFieldGroupWalker const&) = default;
    IZANFieldGroupWalker& operator=(IZANFieldGroupWalker const&) = default;

    /// Walks one group: `startGroup`; then each nested group, by ascending group tag and then in
    /// the order in which they were added; then `processField` for each field by ascending tag;
    /// `endGroup`. The text form of a group has it the other way round, fields first. An override
    /// gets the nested groups too. An exception of a callback ends the walk.
    virtual void walkThrough(ZANFieldGroup const& group);

    /// A group is entered. References are valid during the call.
    virtual void startGroup(ZANFieldGroup const& group) = 0;

    /// A field of `group`.
    virtual void processField(ZANField const& field, ZANFieldGroup const& group) = 0;

    /// A group is left.
    virtual void endGroup(ZANFieldGroup const& group) = 0;

protected:
    ~IZANFieldGroupWalker() = default;
};

#endif
