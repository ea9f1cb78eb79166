#ifdef _ZY_UNITY_BUILD

@@INCLUDE_ALL_CPP@@

#endif // _ZY_UNITY_BUILD
