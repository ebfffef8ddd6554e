// Objects that several processes reach by a name.
//
// Their state is one word in shared memory, taken by compare-exchange. There is no queue and
// nothing is handed over: a signal wakes who sleeps, and they look again, so that nothing is lost
// to a waiter that is killed. What a thread may die in the middle of is covered by the kernel
// (robust_word.h).
//
// A process has one such object of a name, whatever the number of its handles.
#pragma once

#include "tvutil2/platform/objects/shared/shared_block.h"
#include "tvutil2/platform/objects/waitable.h"

namespace tvutil2 {

class SharedObject : public WaitableObject {
  public:
    SharedObject(HandleKind kind, std::unique_ptr<SharedBlock> block, std::u16string name);
    ~SharedObject() override;
    [[nodiscard]] SharedObject* shared() override { return this; }
    [[nodiscard]] const SharedBlock& block() const { return *m_block; }
    [[nodiscard]] const std::u16string& name() const { return m_name; }
    /// It never got its name.
    void forget_name() { m_name.clear(); }
    /// A descriptor beside the block's that other processes need; -1 without.
    [[nodiscard]] virtual int file_descriptor() const { return -1; }

    /// What is pulsed from now on is for this wait.
    void note_pulses(WaitEntry& entry) const;
    /// A wait begins that may sleep.
    void begin_wait();
    /// It ends, without the object unless `has_taken`.
    void end_wait(bool has_taken);
    /// Notes what to sleep on. What changes behind it ends the sleep at once.
    virtual void prepare_sleep(WaitEntry& entry);
    [[nodiscard]] virtual std::atomic<DWORD>& word() const { return header().sequence; }
    /// Takes the object, if it can be had; `outcome` is WAIT_OBJECT_0 or WAIT_ABANDONED_0.
    virtual bool try_take(ThreadRecord& thread, const WaitEntry& entry, DWORD& outcome) = 0;
    /// Undoes that.
    virtual void give_back(ThreadRecord& thread, DWORD outcome) = 0;
    [[nodiscard]] RobustWord& robust() const { return header().robust; }

  protected:
    [[nodiscard]] BlockHeader& header() const { return m_block->header(); }
    /// Changes the state by `change` and wakes all who sleep.
    template <class Change>
    void signal(const Change& change);
    void take(ThreadRecord& /*thread*/) override {}
    virtual void pass_on() {}

  private:
    std::unique_ptr<SharedBlock> m_block;
    std::u16string m_name;
};

class SharedEvent : public SharedObject {
  public:
    SharedEvent(std::unique_ptr<SharedBlock> block, std::u16string name)
        : SharedObject(HandleKind::event, std::move(block), std::move(name)) {}
    void set();
    void reset();
    void pulse();
    bool try_take(ThreadRecord& thread, const WaitEntry& entry, DWORD& outcome) override;
    void give_back(ThreadRecord& thread, DWORD outcome) override;

  protected:
    [[nodiscard]] bool is_available(const ThreadRecord& thread) const override;

  private:
    [[nodiscard]] bool is_manual() const { return block().traits() != 0; }
    bool take_pulse(DWORD since);
};

class SharedSemaphore : public SharedObject {
  public:
    SharedSemaphore(std::unique_ptr<SharedBlock> block, std::u16string name)
        : SharedObject(HandleKind::semaphore, std::move(block), std::move(name)) {}
    bool release(LONG count, LONG* previous);
    bool try_take(ThreadRecord& thread, const WaitEntry& entry, DWORD& outcome) override;
    void give_back(ThreadRecord& thread, DWORD outcome) override;

  protected:
    [[nodiscard]] bool is_available(const ThreadRecord& thread) const override;
};

class SharedMutex : public SharedObject, public std::enable_shared_from_this<SharedMutex> {
  public:
    SharedMutex(std::unique_ptr<SharedBlock> block, std::u16string name)
        : SharedObject(HandleKind::mutex, std::move(block), std::move(name)) {}
    /// False when the calling thread isn't the owner.
    bool release();
    /// The owner, the calling thread, ends.
    void abandon();
    void prepare_sleep(WaitEntry& entry) override;
    [[nodiscard]] std::atomic<DWORD>& word() const override { return robust().word; }
    bool try_take(ThreadRecord& thread, const WaitEntry& entry, DWORD& outcome) override;
    void give_back(ThreadRecord& thread, DWORD outcome) override;
    void on_closed() override;

  protected:
    [[nodiscard]] bool is_available(const ThreadRecord& thread) const override;
    void pass_on() override;

  private:
    [[nodiscard]] DWORD owner() const { return robust().word.load() & RobustWord::kOwner; }
    /// Frees the word; `mark` stays in it.
    void free_word(DWORD mark);

    DWORD m_depth = 0;  ///< of the owner
};

}  // namespace tvutil2
