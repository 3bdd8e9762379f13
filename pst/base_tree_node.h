#pragma once
// Intrusive tree nodes: each node carries its own links to parent, siblings and children, so a
// tree of index pages or sub-nodes needs no container. A parent owns its children and destroys
// them with itself.
#include <cstdint>
#include <string_view>

namespace ty {

template <class T>
class TreeNode;

template <class T>
class BaseTreeNode {
public:
    BaseTreeNode() = default;
    // A copy is a record without a place in any tree.
    BaseTreeNode(const BaseTreeNode&) {}
    BaseTreeNode& operator=(const BaseTreeNode&) = delete;
    virtual ~BaseTreeNode();

    virtual T* parent() const = 0;
    virtual T* firstChild() const = 0;
    virtual T* next() const = 0;
    virtual T* previous() const = 0;

protected:
    friend class TreeNode<T>;

    // Takes the node out of its parent's list of children, leaving its own children with it.
    void detach();
    static T* typed(BaseTreeNode* node) { return static_cast<T*>(node); }

    // Links are kept as the base, so that a node being destroyed is never cast to T.
    BaseTreeNode* parent_ = nullptr;
    BaseTreeNode* next_ = nullptr;
    BaseTreeNode* previous_ = nullptr;
    BaseTreeNode* firstChild_ = nullptr;
    BaseTreeNode* lastChild_ = nullptr;
    uint32_t childCount_ = 0;
};

template <class T>
class TreeNode : public BaseTreeNode<T> {
public:
    T* parent() const override { return this->typed(this->parent_); }
    T* firstChild() const override { return this->typed(this->firstChild_); }
    T* next() const override { return this->typed(this->next_); }
    T* previous() const override { return this->typed(this->previous_); }
    virtual uint32_t childCount() const { return this->childCount_; }
    T* lastChild() const { return this->typed(this->lastChild_); }

    // Each of the three takes the node over (its parent will destroy it) after detaching it
    // from where it stood; a null node does nothing.
    virtual void insertAfter(T* node);
    virtual void insertBefore(T* node);
    virtual void appendChild(T* node);
    // Destroys all children.
    void removeChildren();

private:
    using Base = BaseTreeNode<T>;
};

// Names a type the way error sources spell it, e.g. "class PST::Index::IndexNode".
template <class T>
struct TypeDesciber {
    static constexpr std::u16string_view typeName() { return T::kTypeName; }
};

template <class T>
BaseTreeNode<T>::~BaseTreeNode()
{
    detach();
    while (firstChild_) delete firstChild_;  // each child's destructor unlinks it
}

template <class T>
void BaseTreeNode<T>::detach()
{
    if (parent_) {
        if (parent_->firstChild_ == this) parent_->firstChild_ = next_;
        if (parent_->lastChild_ == this) parent_->lastChild_ = previous_;
        --parent_->childCount_;
    }
    if (previous_) previous_->next_ = next_;
    if (next_) next_->previous_ = previous_;
    parent_ = next_ = previous_ = nullptr;
}

template <class T>
void TreeNode<T>::insertAfter(T* node)
{
    Base* other = node;
    if (!other || other == this) return;
    other->detach();
    other->parent_ = this->parent_;
    other->previous_ = this;
    other->next_ = this->next_;
    if (this->next_) this->next_->previous_ = other;
    this->next_ = other;
    if (this->parent_) {
        if (this->parent_->lastChild_ == this) this->parent_->lastChild_ = other;
        ++this->parent_->childCount_;
    }
}

template <class T>
void TreeNode<T>::insertBefore(T* node)
{
    Base* other = node;
    if (!other || other == this) return;
    other->detach();
    other->parent_ = this->parent_;
    other->next_ = this;
    other->previous_ = this->previous_;
    if (this->previous_) this->previous_->next_ = other;
    this->previous_ = other;
    if (this->parent_) {
        if (this->parent_->firstChild_ == this) this->parent_->firstChild_ = other;
        ++this->parent_->childCount_;
    }
}

template <class T>
void TreeNode<T>::appendChild(T* node)
{
    Base* other = node;
    if (!other || other == this) return;
    if (this->lastChild_) {
        this->typed(this->lastChild_)->insertAfter(node);
        return;
    }
    other->detach();
    other->parent_ = this;
    this->firstChild_ = this->lastChild_ = other;
    ++this->childCount_;
}

template <class T>
void TreeNode<T>::removeChildren()
{
    while (this->firstChild_) delete this->firstChild_;
}

}  // namespace ty
