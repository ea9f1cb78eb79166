// Compile-check stand-in for the implementation side of the Lumor library: what generated sources
// use after the generated headers (registration of classes, validators, fetching relations).
// Member functions have trivial bodies so that the generated library also links.

#ifndef LUMOR_IMPL_COMPILE_CHECK_H
#define LUMOR_IMPL_COMPILE_CHECK_H

#include <Lumor.h>

namespace zy {

class IxFunction;
class IxValidator;

class IxDataMember
{
public:
   void setName(const QString & name) { Q_UNUSED(name); }
   void setDescription(const QString & description) { Q_UNUSED(description); }
   void setPropertyBag(const QString & key, const QVariant & value) { Q_UNUSED(key); Q_UNUSED(value); }
   void setSqlType(const QString & sqlType) { Q_UNUSED(sqlType); }
   void setSqlAlias(const QString & sqlAlias) { Q_UNUSED(sqlAlias); }
   void setFormat(const QString & format) { Q_UNUSED(format); }
   void setIsIndex(bool isIndex) { Q_UNUSED(isIndex); }
   void setIsUnique(bool isUnique) { Q_UNUSED(isUnique); }
   void setSerialize(bool serialize) { Q_UNUSED(serialize); }
};

class IxSqlRelation
{
public:
   IxDataMember * getDataMember() const { return m_pDataMember; }
   void setPropertyBag(const QString & key, const QVariant & value) { Q_UNUSED(key); Q_UNUSED(value); }

private:
   IxDataMember * m_pDataMember = nullptr;
};

class ZySoftDelete
{
public:
   explicit ZySoftDelete(const QString & column) : m_column(column) { ; }

private:
   QString m_column;
};

template <class T>
class ZyValidatorX
{
public:
   // The entity's own validator method, bound with std::mem_fn.
   typedef std::function<void (T *, ZyInvalidValueX &)> type_custom_validator;

   IxValidator * add_NotNull(const QString & property) { Q_UNUSED(property); return nullptr; }
   IxValidator * add_MinDecimal(const QString & property, long double value) { Q_UNUSED(property); Q_UNUSED(value); return nullptr; }
   IxValidator * add_MaxDecimal(const QString & property, long double value) { Q_UNUSED(property); Q_UNUSED(value); return nullptr; }
   IxValidator * add_MinLength(const QString & property, long length) { Q_UNUSED(property); Q_UNUSED(length); return nullptr; }
   IxValidator * add_MaxLength(const QString & property, long length) { Q_UNUSED(property); Q_UNUSED(length); return nullptr; }
   IxValidator * add_RegExp(const QString & property, const QString & pattern) { Q_UNUSED(property); Q_UNUSED(pattern); return nullptr; }
   IxValidator * add_CustomValidator(type_custom_validator fct) { Q_UNUSED(fct); return nullptr; }
};

// What the generated register_class<T> definitions fill in. Member pointers without the
// trailing implementation argument must belong to T (or a base of T); with it, they belong to the
// private implementation structure that pimpl() announced.
template <class T>
class ZyClass
{
public:
   void setName(const QString & name) { Q_UNUSED(name); }
   void setDescription(const QString & description) { Q_UNUSED(description); }
   void setPropertyBag(const QString & key, const QVariant & value) { Q_UNUSED(key); Q_UNUSED(value); }
   void setSoftDelete(const ZySoftDelete & softDelete) { Q_UNUSED(softDelete); }
   void setDaoReadOnly(bool readOnly) { Q_UNUSED(readOnly); }

   template <class Impl>
   IxDataMember * pimpl(std::unique_ptr<Impl> T::* member) { Q_UNUSED(member); return & m_dataMember; }

   template <class V, class Owner>
   IxDataMember * id(V Owner::* member, const QString & key, long version)
   { checkOwner<Owner>(); checkKey<V>(); Q_UNUSED(member); Q_UNUSED(key); Q_UNUSED(version); return & m_dataMember; }
   template <class V, class Impl>
   IxDataMember * id(V Impl::* member, const QString & key, long version, IxDataMember * pImpl)
   { checkKey<V>(); Q_UNUSED(member); Q_UNUSED(key); Q_UNUSED(version); Q_UNUSED(pImpl); return & m_dataMember; }

   template <class V, class Owner>
   IxDataMember * data(V Owner::* member, const QString & key, long version, bool serialize, bool dao)
   { checkOwner<Owner>(); Q_UNUSED(member); Q_UNUSED(key); Q_UNUSED(version); Q_UNUSED(serialize); Q_UNUSED(dao); return & m_dataMember; }
   template <class V, class Impl>
   IxDataMember * data(V Impl::* member, const QString & key, long version, bool serialize, bool dao, IxDataMember * pImpl)
   { Q_UNUSED(member); Q_UNUSED(key); Q_UNUSED(version); Q_UNUSED(serialize); Q_UNUSED(dao); Q_UNUSED(pImpl); return & m_dataMember; }

   template <class V, class Owner>
   IxSqlRelation * relationOneToOne(V Owner::* member, const QString & key, long version)
   { checkOwner<Owner>(); Q_UNUSED(member); Q_UNUSED(key); Q_UNUSED(version); return & m_relation; }
   template <class V, class Impl>
   IxSqlRelation * relationOneToOne(V Impl::* member, const QString & key, long version, IxDataMember * pImpl)
   { Q_UNUSED(member); Q_UNUSED(key); Q_UNUSED(version); Q_UNUSED(pImpl); return & m_relation; }

   template <class V, class Owner>
   IxSqlRelation * relationManyToOne(V Owner::* member, const QString & key, long version)
   { checkOwner<Owner>(); Q_UNUSED(member); Q_UNUSED(key); Q_UNUSED(version); return & m_relation; }
   template <class V, class Impl>
   IxSqlRelation * relationManyToOne(V Impl::* member, const QString & key, long version, IxDataMember * pImpl)
   { Q_UNUSED(member); Q_UNUSED(key); Q_UNUSED(version); Q_UNUSED(pImpl); return & m_relation; }

   template <class V, class Owner>
   IxSqlRelation * relationOneToMany(V Owner::* member, const QString & key, const QString & foreignKey, long version)
   { checkOwner<Owner>(); Q_UNUSED(member); Q_UNUSED(key); Q_UNUSED(foreignKey); Q_UNUSED(version); return & m_relation; }
   template <class V, class Impl>
   IxSqlRelation * relationOneToMany(V Impl::* member, const QString & key, const QString & foreignKey, long version, IxDataMember * pImpl)
   { Q_UNUSED(member); Q_UNUSED(key); Q_UNUSED(foreignKey); Q_UNUSED(version); Q_UNUSED(pImpl); return & m_relation; }

   template <class V, class Owner>
   IxSqlRelation * relationManyToMany(V Owner::* member, const QString & key, const QString & extraTable,
                                      const QString & foreignKey, const QString & foreignKeyOwner, long version)
   {
      checkOwner<Owner>(); Q_UNUSED(member); Q_UNUSED(key); Q_UNUSED(extraTable); Q_UNUSED(foreignKey);
      Q_UNUSED(foreignKeyOwner); Q_UNUSED(version); return & m_relation;
   }
   template <class V, class Impl>
   IxSqlRelation * relationManyToMany(V Impl::* member, const QString & key, const QString & extraTable,
                                      const QString & foreignKey, const QString & foreignKeyOwner, long version, IxDataMember * pImpl)
   {
      Q_UNUSED(member); Q_UNUSED(key); Q_UNUSED(extraTable); Q_UNUSED(foreignKey);
      Q_UNUSED(foreignKeyOwner); Q_UNUSED(version); Q_UNUSED(pImpl); return & m_relation;
   }

   ZyValidatorX<T> * getAllValidator() { return & m_validator; }

private:
   template <class Owner>
   static void checkOwner() { static_assert(std::is_base_of<Owner, T>::value, "member of another class registered"); }
   // The primary key member has the type that ZY_REGISTER_PRIMARY_KEY announced (long when none).
   template <class V>
   static void checkKey() { static_assert(std::is_same<V, typename trait::registered_key<T>::type>::value, "primary key type differs from the registered one"); }

   IxDataMember m_dataMember;
   IxSqlRelation m_relation;
   ZyValidatorX<T> m_validator;
};

namespace trait {

// A registered class that is not declared abstract must be default-constructible and concrete.
template <class T>
T * create_instance()
{
   if constexpr (registered_abstract<T>::value) { return nullptr; }
   else { return new T(); }
}

} // namespace trait

namespace dao {

template <class T>
QSqlError fetch_by_id(T & t, QSqlDatabase * pDatabase = nullptr)
{ Q_UNUSED(t); Q_UNUSED(pDatabase); return QSqlError(); }

template <class T>
QSqlError fetch_by_id_with_relation(const QString & relation, T & t, QSqlDatabase * pDatabase = nullptr)
{ Q_UNUSED(relation); Q_UNUSED(t); Q_UNUSED(pDatabase); return QSqlError(); }

} // namespace dao

} // namespace zy

// In the source of a concrete persistable class, inside its namespace, className as seen there.
#define ZY_PERSISTABLE_CPP(className) \
   static_assert(std::is_same< className, className::type_zy_persistable_self >::value, \
                 "ZY_PERSISTABLE_HPP and ZY_PERSISTABLE_CPP name different classes"); \
   QSqlError className::zyFetchById(QSqlDatabase * pDatabase) { return zy::dao::fetch_by_id((* this), pDatabase); } \
   zy::ZyInvalidValueX className::zyValidate() { return zy::ZyInvalidValueX(); }

// Defines what the HPP counterpart declared, and declares the register_class<T> version that
// the generated source then defines, so that both must agree on its signature.
#define ZY_REGISTER_COMPLEX_CLASS_NAME_CPP_IMPL(className, helperName) \
   namespace zy { \
   template <> void register_class(ZyClass< className > & t); \
   namespace trait { \
   const char * registered_name< className >::get() { return #helperName; } \
   template className * create_instance< className >(); \
   } }

#define ZY_REGISTER_COMPLEX_CLASS_NAME_CPP_EXPORT_DLL(className, helperName) \
   ZY_REGISTER_COMPLEX_CLASS_NAME_CPP_IMPL(className, helperName)

#define ZY_REGISTER_COMPLEX_CLASS_NAME_CPP_IMPORT_DLL(className, helperName) \
   ZY_REGISTER_COMPLEX_CLASS_NAME_CPP_IMPL(className, helperName)

#endif // LUMOR_IMPL_COMPILE_CHECK_H
