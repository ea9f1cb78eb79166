/************************************************************************************************
** File created by Tavrel @APP_VERSION@ (2024/05/06 07:08) : please, do NOT modify this file ! **
************************************************************************************************/

#ifndef _SHOP_SHOP_SALES_INVOICE_H_
#define _SHOP_SHOP_SALES_INVOICE_H_

#ifdef _ZY_NO_PRECOMPILED_HEADER
#ifndef Q_MOC_RUN
#include "../include/Shop_precompiled_header.gen.h" // Need to include precompiled header for the generated moc file
#endif // Q_MOC_RUN
#endif // _ZY_NO_PRECOMPILED_HEADER

namespace shop {
namespace sales {
class Order;
} // namespace sales
} // namespace shop

namespace shop {
namespace sales {

/*!
 * \brief Invoice issued for a paid order; never changed once written
 */
class SHOP_EXPORT Invoice : public QObject, public zy::IxPersistable
{

   Q_OBJECT
   ZY_REGISTER_FRIEND_CLASS(shop::sales::Invoice)

   ZY_PERSISTABLE_HPP(shop::sales::Invoice)

public:

   typedef std::shared_ptr<shop::sales::Order> type_order;

protected:

private:

   QString m_invoice_no;

protected:

   QDate m_issued_on;
   double m_amount;
   QString m_legacy_code;
   Invoice::type_order m_order;

public:

   Invoice();
   Invoice(const QString & id);
   virtual ~Invoice();

   QString getinvoice_no() const;
   QDate getissued_on() const;
   double getamount() const;
   Invoice::type_order getorder() const;

   void setinvoice_no(const QString & val);
   void setissued_on(const QDate & val);
   void setamount(const double & val);
   void setorder(const Invoice::type_order & val);

   Invoice::type_order getorder(bool bLoadFromDatabase, const QString & sAppendRelations = QString(), QSqlDatabase * pDatabase = NULL, QSqlError * pDaoError = NULL);

public:

   static QString relation_order(bool key = false) { Q_UNUSED(key); return "order"; }

public:

   static QString column_invoice_no(bool key = false) { Q_UNUSED(key); return "invoice_no"; }
   static QString column_issued_on(bool key = false) { Q_UNUSED(key); return "issued_on"; }
   static QString column_amount(bool key = false) { Q_UNUSED(key); return "amount"; }

public:

   static QString table_name(bool key = false) { return (key ? QString("Invoice") : QString("t_invoice")); }

};

typedef std::shared_ptr<Invoice> Invoice_ptr;
typedef zy::ZyCollection<QString, Invoice_ptr> list_of_Invoice;
typedef std::shared_ptr<list_of_Invoice> list_of_Invoice_ptr;

} // namespace sales
} // namespace shop

ZY_REGISTER_PRIMARY_KEY(shop::sales::Invoice, QString)
ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_SHOP(shop::sales::Invoice, QObject, 0, shop_sales_Invoice)

#include "../include/shop_sales_Order.gen.h"

#include "../custom/include/shop_sales_Invoice.h"

#endif // _SHOP_SHOP_SALES_INVOICE_H_
