// The key by which a photo refers to a reseau format: camera type or file name, and a sub id.
#pragma once

#include "zu/export.h"
#include "zu/foundation/string.h"

class ZuReseauFile;

class ZU_API ZuReseauDataDesc {
 public:
  ZuReseauDataDesc() = default;
  ZuReseauDataDesc(const ZuReseauDataDesc& other) = default;
  ZuReseauDataDesc(const String& name, unsigned int uSubId) { Set(name, uSubId); }
  ZuReseauDataDesc(const char* szName, unsigned int uSubId) { Set(String(szName), uSubId); }
  explicit ZuReseauDataDesc(const ZuReseauFile* pFile) { Set(pFile); }
  virtual ~ZuReseauDataDesc() = default;
  ZuReseauDataDesc& operator=(const ZuReseauDataDesc& other) = default;

  // Leaves the comment alone.
  void Set(const String& name, unsigned int uSubId);
  // Name, sub id and comment; null changes nothing.
  void Set(const ZuReseauFile* pFile);

  unsigned int GetId() const { return m_uSubId; }
  const String& GetName() const { return m_sName; }
  const String& GetComment() const { return m_sComment; }
  void SetName(const String& name) { m_sName = name; }
  void SetId(unsigned int uSubId) { m_uSubId = uSubId; }
  void SetComment(const String& comment) { m_sComment = comment; }

  // Names equal without regard to the case of ASCII letters.
  bool Match(const ZuReseauDataDesc& other) const;
  // The same, and the sub ids equal.
  bool ExactMatch(const ZuReseauDataDesc& other) const;
  // Required: a sub id of 0 on the right side means any; on the left side it does not.
  bool operator==(const ZuReseauDataDesc& other) const;

 protected:
  String m_sName;
  unsigned int m_uSubId = 0;
  String m_sComment;
};
