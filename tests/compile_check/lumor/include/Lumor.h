// Compile-check stand-in for the Lumor library: the part of its interface that generated headers
// use, reached through the generated precompiled header. Declarations only where the generated
// text needs nothing more; nothing here is meant to run.

#ifndef LUMOR_COMPILE_CHECK_H
#define LUMOR_COMPILE_CHECK_H

#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

// Qt types that generated classes and the example models use.
#include <QtCore/QByteArray>
#include <QtCore/QDate>
#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QTime>
#include <QtCore/QUuid>
#include <QtCore/QVariant>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlError>

// The check builds with GCC or Clang only.
#define ZY_DLL_EXPORT_HELPER __attribute__((visibility("default")))
#define ZY_DLL_IMPORT_HELPER

namespace zy {

template <class T> class ZyClass;

// Generated sources define it once per entity (template <>); generated headers befriend that version.
template <class T> void register_class(ZyClass<T> & t);

// Keyed, ordered list: generated typedefs use it for lists of entities and for relations, as a
// value type only.
template <typename Key, typename Value>
class ZyCollection
{
private:
   std::vector<std::pair<Key, Value> > m_items;
};

// Failed validations; the validator methods that generated headers declare receive one.
class ZyInvalidValueX
{
private:
   QList<QString> m_messages;
};

// Root of persistable classes (styles 1 and 3). Pure virtual so that a class that is meant to be
// concrete but lacks ZY_PERSISTABLE_HPP / ZY_PERSISTABLE_CPP cannot be instantiated.
class IxPersistable
{
public:
   virtual ~IxPersistable() { ; }
   virtual QSqlError zyFetchById(QSqlDatabase * pDatabase = nullptr) = 0;
   virtual ZyInvalidValueX zyValidate() = 0;
};

// Persistable and QObject at once (style 2). No Q_OBJECT of its own: the fixture is not moc'ed.
class ZyPersistable : public QObject, public IxPersistable
{
public:
   explicit ZyPersistable(QObject * parent = nullptr) : QObject(parent) { ; }
   virtual ~ZyPersistable() { ; }
};

namespace trait {

struct no_base_class_defined { };

// Filled in by the registration macros below; read back by the implementation side.
template <class T> struct registered_key { typedef long type; };
template <class T> struct registered_abstract { enum { value = false }; };
template <class T> struct registered_base;
template <class T> struct registered_version;
template <class T> struct registered_name;

} // namespace trait

namespace dao {
namespace detail {

class IxDao_Helper;

// Default triggers do nothing. Generated headers give classes with triggers their own version,
// which hands the events they do not handle to the base class's version (or to this default).
template <class T>
struct ZyDao_Trigger
{
   static inline void onBeforeFetch(T * t, IxDao_Helper * dao) { Q_UNUSED(t); Q_UNUSED(dao); }
   static inline void onAfterFetch(T * t, IxDao_Helper * dao) { Q_UNUSED(t); Q_UNUSED(dao); }
   static inline void onBeforeInsert(T * t, IxDao_Helper * dao) { Q_UNUSED(t); Q_UNUSED(dao); }
   static inline void onAfterInsert(T * t, IxDao_Helper * dao) { Q_UNUSED(t); Q_UNUSED(dao); }
   static inline void onBeforeUpdate(T * t, IxDao_Helper * dao) { Q_UNUSED(t); Q_UNUSED(dao); }
   static inline void onAfterUpdate(T * t, IxDao_Helper * dao) { Q_UNUSED(t); Q_UNUSED(dao); }
   static inline void onBeforeDelete(T * t, IxDao_Helper * dao) { Q_UNUSED(t); Q_UNUSED(dao); }
   static inline void onAfterDelete(T * t, IxDao_Helper * dao) { Q_UNUSED(t); Q_UNUSED(dao); }
};

} // namespace detail
} // namespace dao

} // namespace zy

// Inside the class: the registration function reads protected and private members.
#define ZY_REGISTER_FRIEND_CLASS(className) \
   friend void zy::register_class<className>(zy::ZyClass<className> & t); \
   friend class zy::ZyClass<className>;

// Inside a concrete persistable class; className is the full name. ZY_PERSISTABLE_CPP, given the
// name as seen inside the namespace, checks that both name the same class.
#define ZY_PERSISTABLE_HPP(className) \
public: \
   typedef className type_zy_persistable_self; \
   virtual QSqlError zyFetchById(QSqlDatabase * pDatabase = nullptr) override; \
   virtual zy::ZyInvalidValueX zyValidate() override; \
private:

#define ZY_REGISTER_PRIMARY_KEY(className, primaryKey) \
   namespace zy { namespace trait { \
   template <> struct registered_key< className > { typedef primaryKey type; }; \
   } }

#define ZY_REGISTER_ABSTRACT_CLASS(className) \
   namespace zy { namespace trait { \
   template <> struct registered_abstract< className > { enum { value = true }; }; \
   } }

// The generated export header maps ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_<PROJECT> to one of these.
// The registered base must really be a base class (or the "no base" marker).
#define ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_IMPL(className, baseClass, version, helperName, dllMacro) \
   namespace zy { namespace trait { \
   template <> struct registered_base< className > { typedef baseClass type; }; \
   template <> struct registered_version< className > { enum { value = version }; }; \
   template <> struct dllMacro registered_name< className > { static const char * get(); }; \
   } } \
   static_assert(std::is_same< baseClass, zy::trait::no_base_class_defined >::value \
                 || std::is_base_of< baseClass, className >::value, \
                 "registered base class of " #helperName " is not one of its base classes");

#define ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_EXPORT_DLL(className, baseClass, version, helperName) \
   ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_IMPL(className, baseClass, version, helperName, ZY_DLL_EXPORT_HELPER)

#define ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_IMPORT_DLL(className, baseClass, version, helperName) \
   ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_IMPL(className, baseClass, version, helperName, ZY_DLL_IMPORT_HELPER)

#endif // LUMOR_COMPILE_CHECK_H
