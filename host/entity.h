// Scene entities, the references that watch them, and the script instances bound to them.
//
// Threads: entities belong to the engine's thread; a reference may be copied and dropped on any
//   thread, each single one by one thread at a time.
#pragma once

#include <cstdint>

#include "host/api.h"
#include "host/mobj.h"
#include "host/mxml.h"
#include "host/script.h"

namespace ORVANE {

// An object whose end its watchers learn of.
class ORVANE_API MMONOBJ : public MOBJ {
 public:
  MMONOBJ();
  ~MMONOBJ() override;

 private:
  friend class MMONOBJPNT;
  struct MONITOR;

  MONITOR* const monitor_;  // Owned, together with every reference to it.
};

// A reference that reads null when it refers to nothing, or to an object that is gone.
//
// To point it elsewhere by hand: SubRef, Set, AddRef.
class ORVANE_API MMONOBJPNT {
 public:
  // Refers to nothing.
  MMONOBJPNT();
  MMONOBJPNT(const MMONOBJPNT& other);
  MMONOBJPNT& operator=(const MMONOBJPNT& other);
  ~MMONOBJPNT();

  MMONOBJ* Get() const;
  // Takes or drops this reference's share in what it points to.
  void AddRef();
  void SubRef();
  // Points it at `object`, or at nothing, without counting.
  void Set(MMONOBJ* object);

 private:
  MMONOBJ::MONITOR* monitor_;
};

// A node of the scene graph.
class ORVANE_API MGDNODE : public MMONOBJ {
 public:
  MGDNODE();
  ~MGDNODE() override;

  bool Read(MBUFFER& buffer) override;
  bool Write(MBUFFER& buffer) const override;
  virtual void MarkChanged();
  virtual void MarkMoved();
};

class ORVANE_API ENTITY : public MGDNODE {
 public:
  ENTITY();
  ~ENTITY() override;

  // What an entity is created from.
  class ORVANE_API CREATEPARAMS : public MOBJ {
   public:
    CREATEPARAMS();
    ~CREATEPARAMS() override;

    // Reads the entity's name from the attribute `name`.
    virtual bool MakeParams(const MXML::NODE& node);
    MSTR name;
  };

  // A script instance that can be bound to an entity.
  class ORVANE_API MSS : public MSSINSTANCE {
   public:
    // The engine's own script class of entities.
    class ORVANE_API MODULE : public MSSMODULE {
     public:
      MODULE();
      ~MODULE() override;
      MSSINSTANCE* CreateInstance() override;
      static MREFOBJREF _Module;
    };

    MSS();
    ~MSS() override;

    // Copies the binding; false when `other` is not an entity instance.
    bool Copy(const MSSINSTANCE* other) override;
    // Equal when both are bound to the same entity.
    int Compare(const MSSINSTANCE* other) const override;
    bool IsNull() const override;

    MMONOBJPNT entity;
  };

  virtual void Refresh();
  virtual bool Copy(const ENTITY* other);
  virtual int FindAnim(const char* name) const;
  virtual int GetNumAnims() const;
  virtual float GetAnimDuration(int index) const;
  virtual int GetAnim() const;
  virtual bool SetAnim(int index);
  virtual void CollectColliders(void* collection);
  virtual CREATEPARAMS* CreateParams() const;
  virtual bool Create(const CREATEPARAMS& params);
  virtual void PreThink(std::uint32_t tick);
  // Called again and again while the entity lives. [engine]
  virtual void Think(std::uint32_t tick);
  virtual void PostThink(std::uint32_t tick);
  virtual void Render(void* view);
  virtual void PreRender(void* view);
  virtual bool CollideStart(void* collision);
  struct VOLUME;
  struct HULL;
  virtual bool Collide(const VOLUME& volume);
  virtual bool Collide(const HULL& hull);
  virtual void CollideDebug(void* view);
  virtual void CollideEnd(void* collision);
  virtual void OnCollide(ENTITY* other);
  virtual bool OnInput(int input);
  virtual bool OnInputPreview(int input);
  virtual void OnViewSize(int width, int height);
};

}  // namespace ORVANE
