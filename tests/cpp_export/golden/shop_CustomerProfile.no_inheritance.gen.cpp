/************************************************************************************************
** File created by Tavrel @APP_VERSION@ (2024/05/06 07:08) : please, do NOT modify this file ! **
************************************************************************************************/

#include "../include/Shop_precompiled_header.gen.h"

#include "../include/shop_CustomerProfile.gen.h"

#include <Lumor_Impl.h>

ZY_REGISTER_COMPLEX_CLASS_NAME_CPP_SHOP(shop::CustomerProfile, shop_CustomerProfile)

namespace zy {

template <>
void register_class(ZyClass<shop::CustomerProfile> & t)
{
   zy::IxDataMember * pData = NULL; Q_UNUSED(pData);
   zy::IxSqlRelation * pRelation = NULL; Q_UNUSED(pRelation);
   zy::IxFunction * pFct = NULL; Q_UNUSED(pFct);
   zy::IxValidator * pValidator = NULL; Q_UNUSED(pValidator);

   t.setName("t_customer_profile");

   pData = t.data(& shop::CustomerProfile::m_bio, "bio", 0, true, true);
   pData->setDescription("Free text shown on the customer page");
   pData = t.data(& shop::CustomerProfile::m_newsletter, "newsletter", 0, true, true);
   pData = t.data(& shop::CustomerProfile::m_avatar_url, "avatar_url", 0, true, true);
   pData->setName("avatar");

   zy::ZyValidatorX<shop::CustomerProfile> * pAllValidator = t.getAllValidator(); Q_UNUSED(pAllValidator);
}

} // namespace zy

namespace shop {

CustomerProfile::CustomerProfile() : shop::Base(), m_newsletter(true) { ; }

CustomerProfile::CustomerProfile(const long & id) : shop::Base(id), m_newsletter(true) { ; }

CustomerProfile::~CustomerProfile() { ; }

QString CustomerProfile::getbio() const { return m_bio; }

bool CustomerProfile::getnewsletter() const { return m_newsletter; }

QString CustomerProfile::getavatar_url() const { return m_avatar_url; }

void CustomerProfile::setbio(const QString & val) { m_bio = val; }

void CustomerProfile::setnewsletter(const bool & val) { m_newsletter = val; }

void CustomerProfile::setavatar_url(const QString & val) { m_avatar_url = val; }

} // namespace shop
