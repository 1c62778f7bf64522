#include "zu/foundation/str_rep.h"

#include <algorithm>
#include <cctype>

#include "zu/foundation/internal/str_block.h"

using zu::internal::FreeRep;
using zu::internal::IsNil;
using zu::internal::LiesIn;
using zu::internal::NewRep;
using zu::internal::NilRep;
using zu::internal::SetLength;
using zu::internal::TextLength;

const StrRep _nilStrRep = {0, 1, {'\0'}};

namespace {

struct Piece {
  char const* s;
  std::size_t n;
};

// Copies forward; a piece that is in place already is skipped.
char* CopyPiece(char* pTarget, Piece const& piece) {
  if (piece.n > 0 && pTarget != piece.s) std::memmove(pTarget, piece.s, piece.n);
  return pTarget + piece.n;
}

// Joins pieces. The first one may lie in old without asking for a new block, since it is copied to
// the front before anything else is written.
StrRep* Concat(StrRep* old, Piece const* pieces, int nPieces) {
  std::size_t n = 0;
  bool bNew = IsNil(old);
  for (int i = 0; i < nPieces; ++i) {
    n += pieces[i].n;
    if (i > 0 && LiesIn(old, pieces[i].s)) bNew = true;
  }
  if (!bNew && n > old->sz) bNew = true;

  StrRep* p = bNew ? NewRep(n) : old;
  char* pTarget = p->s;
  for (int i = 0; i < nPieces; ++i) pTarget = CopyPiece(pTarget, pieces[i]);
  SetLength(p, n);
  if (p != old) FreeRep(old);
  return p;
}

template <class Change>
StrRep* ChangeCharacters(StrRep const* src, StrRep* dest, Change change) {
  if (src != dest) dest = Scopy(dest, src);
  for (int i = 0; i < dest->len; ++i) {
    dest->s[i] = static_cast<char>(change(static_cast<unsigned char>(dest->s[i])));
  }
  return dest;
}

}  // namespace

StrRep* Salloc(StrRep* old, char const* src, int srclen, int newlen) {
  const std::size_t nSource = TextLength(src, srclen);
  const std::size_t n = std::max(nSource, newlen < 0 ? 0 : static_cast<std::size_t>(newlen));
  StrRep* p = IsNil(old) || n > old->sz ? NewRep(n) : old;
  CopyPiece(p->s, {src, nSource});
  p->s[nSource] = '\0';
  SetLength(p, n);
  if (p != old) FreeRep(old);
  return p;
}

StrRep* Scopy(StrRep* old, StrRep const* src) {
  if (old == src) return old ? old : NilRep();
  if (IsNil(src)) {
    if (IsNil(old)) return NilRep();
    SetLength(old, 0);
    return old;
  }
  // The new block is made before the old one goes, so that a lack of memory leaves the old text.
  StrRep* p = IsNil(old) || src->len > old->sz ? NewRep(src->len) : old;
  CopyPiece(p->s, {src->s, src->len});
  SetLength(p, src->len);
  if (p != old) FreeRep(old);
  return p;
}

StrRep* Scat(StrRep* old, char const* s, int slen, char const* t, int tlen) {
  const Piece pieces[] = {{s, TextLength(s, slen)}, {t, TextLength(t, tlen)}};
  return Concat(old, pieces, 2);
}

StrRep* Scat(StrRep* old, char const* s, int slen, char const* t, int tlen, char const* u,
             int ulen) {
  const Piece pieces[] = {
      {s, TextLength(s, slen)}, {t, TextLength(t, tlen)}, {u, TextLength(u, ulen)}};
  return Concat(old, pieces, 3);
}

StrRep* Sprepend(StrRep* old, char const* t, int tlen) {
  const std::size_t nFront = TextLength(t, tlen);
  const std::size_t nOld = IsNil(old) ? 0 : old->len;
  const std::size_t n = nFront + nOld;
  const bool bNew = IsNil(old) || n > old->sz || LiesIn(old, t);
  StrRep* p = bNew ? NewRep(n) : old;
  if (nOld > 0) std::memmove(p->s + nFront, old->s, nOld);
  CopyPiece(p->s, {t, nFront});
  SetLength(p, n);
  if (p != old) FreeRep(old);
  return p;
}

StrRep* Supcase(StrRep const* src, StrRep* dest) {
  return ChangeCharacters(src, dest, [](int c) { return std::islower(c) ? std::toupper(c) : c; });
}

StrRep* Sdowncase(StrRep const* src, StrRep* dest) {
  return ChangeCharacters(src, dest, [](int c) { return std::isupper(c) ? std::tolower(c) : c; });
}

StrRep* Scapitalize(StrRep const* src, StrRep* dest) {
  bool bInWord = false;
  return ChangeCharacters(src, dest, [&bInWord](int c) {
    if (!bInWord) {
      bInWord = std::islower(c) || std::isupper(c) || std::isdigit(c);
      return std::islower(c) ? std::toupper(c) : c;
    }
    if (std::isupper(c)) return std::tolower(c);
    bInWord = std::islower(c) || std::isdigit(c) || c == '\'';
    return c;
  });
}

StrRep* Sreverse(StrRep const* src, StrRep* dest) {
  if (src != dest) dest = Scopy(dest, src);
  std::reverse(dest->s, dest->s + dest->len);
  return dest;
}

StrRep* Sresize(StrRep* old, int newlen) {
  const std::size_t n = newlen < 0 ? 0 : static_cast<std::size_t>(newlen);
  StrRep* p = old;
  if (IsNil(old)) {
    p = NewRep(n);
  } else if (n > old->sz) {
    p = NewRep(n > old->len ? n : old->len);
    std::memcpy(p->s, old->s, old->len);
    p->s[old->len] = '\0';
    FreeRep(old);
  }
  p->len = static_cast<std::uint16_t>(n);
  return p;
}
