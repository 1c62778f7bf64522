// image_width, image_height
// camera_matrix             3 x 3
// distortion_coefficients   k1 k2 p1 p2 [k3 [k4 k5 k6 [s1 s2 s3 s4 [tau_x tau_y]]]]
// extrinsic_parameters      a row of axis times angle and translation a view
// image_points              what each view measured
// object_points             of the board, in the same order, or of each view
//
// under the names that OpenCV's own programs, its tutorials and their users give them.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "zu/exchange/internal/opencv_file.h"
#include "zu/exchange/internal/storage_node.h"

namespace zu::internal {

namespace {

// Numbers by rows: of a matrix, or of lists in lists.
struct StorageTable {
  std::vector<double> values;
  std::size_t uRows = 0, uWidth = 0;  // numbers of a row; 0 where rows differ
  std::uint64_t uLine = 0;
};

void Flatten(const StorageNode& node, std::vector<double>* pValues) {
  if (node.eKind == StorageNode::Kind::Number) pValues->push_back(node.dNumber);
  pValues->insert(pValues->end(), node.numbers.begin(), node.numbers.end());
  for (const StorageNode& child : node.children) Flatten(child, pValues);
}

class OpenCvReader {
 public:
  OpenCvReader(const ZuExchangeFile& file, const ZuImportOptions& options,
               ZuExchangeReport* pReport)
      : m_file(file), m_options(options), m_pReport(pReport), m_root(ReadStorage(file)) {}

  PhotoBlock Read() {
    ReadCamera();
    ReadPoses();
    ReadImagePoints();
    ReadNames();
    if (m_block.images.empty()) {
      m_block.images.resize(1);
      m_block.images[0].uId = 1;
      m_block.images[0].strName = m_block.cameras[0].strName;
      m_block.images[0].bOriented = false;
      NoteExchange(m_file.strName, "no views; a photo without orientation keeps the camera",
                   m_pReport);
    }
    for (BlockImage& image : m_block.images) image.uCamera = m_block.cameras[0].uId;
    return std::move(m_block);
  }

 private:
  [[noreturn]] void Fail(const StorageNode& node, const std::string& strText,
                         const std::string& strRight) const {
    FailExchange(m_file.strName, node.uLine, strText, strRight);
  }

  StorageTable TableOf(const StorageNode& node) const {
    StorageTable table;
    table.uLine = node.uLine;
    const StorageNode* pData = node.Find({"data"});
    if (pData == nullptr && node.Find({"rows"}) == nullptr) {
      Flatten(node, &table.values);
      table.uRows = node.children.empty() ? table.values.size() : node.children.size();
      table.uWidth = table.uRows > 0 && table.values.size() % table.uRows == 0
                         ? table.values.size() / table.uRows
                         : 0;
      return table;
    }
    if (pData != nullptr && pData->eKind == StorageNode::Kind::Text) {
      Fail(*pData, "a matrix in base64, which is not read", "one that was written as text");
    }
    if (pData != nullptr) Flatten(*pData, &table.values);
    const auto Size = [&](const char* szName) {
      const StorageNode* p = node.Find({szName});
      const double d = p == nullptr ? -1.0 : p->dNumber;
      if (!(d >= 0.0 && d <= 1e9 && d == std::floor(d))) {
        Fail(node, node.strName + " has no " + szName, "rows, cols, dt and data of a matrix");
      }
      return d;
    };
    const double dRows = Size("rows"), dColumns = Size("cols");
    const StorageNode* pType = node.Find({"dt"});
    double dChannels = 1.0;
    if (pType != nullptr && pType->eKind == StorageNode::Kind::Text && pType->strText.size() > 1 &&
        pType->strText[0] >= '1' && pType->strText[0] <= '9') {
      dChannels = pType->strText[0] - '0';
    }
    if (dRows * dColumns * dChannels != static_cast<double>(table.values.size())) {
      Fail(node,
           node.strName + " tells " + std::to_string(static_cast<long long>(dRows)) + " x " +
               std::to_string(static_cast<long long>(dColumns)) + " elements, but has " +
               std::to_string(table.values.size()) + " numbers",
           "as many as it tells");
    }
    table.uRows = static_cast<std::size_t>(dRows);
    table.uWidth = static_cast<std::size_t>(dColumns * dChannels);
    return table;
  }

  StorageTable TableOf(const StorageNode& node, const char* szWhat, std::size_t uNumbers) const {
    StorageTable table = TableOf(node);
    if (table.values.size() != uNumbers) {
      Fail(node, node.strName + " has " + std::to_string(table.values.size()) + " numbers", szWhat);
    }
    return table;
  }

  double NumberOf(std::initializer_list<const char*> names, double dElse) const {
    const StorageNode* p = m_root.Find(names);
    return p != nullptr && p->eKind == StorageNode::Kind::Number ? p->dNumber : dElse;
  }

  std::string TextOf(std::initializer_list<const char*> names) const {
    const StorageNode* p = m_root.Find(names);
    return p != nullptr && p->eKind == StorageNode::Kind::Text ? p->strText : "";
  }

  unsigned IdOf(const StorageNode& node, double d) const {
    if (!(d >= 1.0 && d <= 4294967295.0 && d == std::floor(d))) {
      Fail(node, node.strName + " has an id that is none", "whole numbers from 1 to 4294967295");
    }
    return static_cast<unsigned>(d);
  }

  void ReadCamera() {
    BlockCamera camera;
    const StorageNode* pMatrix =
        m_root.Find({"camera_matrix", "cameraMatrix", "Camera_Matrix", "CameraMatrix", "K"});
    if (pMatrix == nullptr) Fail(m_root, "has no camera_matrix", "a calibration file of OpenCV");
    const std::vector<double> K = TableOf(*pMatrix, "3 x 3", 9).values;
    if (K[3] != 0.0 || K[6] != 0.0 || K[7] != 0.0 || K[8] != 1.0 || !(K[0] > 0.0) ||
        !(K[4] > 0.0)) {
      Fail(*pMatrix, "is no camera matrix", "fx 0 cx, 0 fy cy, 0 0 1 with fx and fy above 0");
    }
    if (K[1] != 0.0) {
      WarnExchange(m_file.strName,
                   "the camera matrix has a skew, which OpenCV does not use; left out", m_pReport);
    }
    PinholeModel& model = camera.model;
    model.fx = K[0];
    model.cx = K[2];
    model.fy = K[4];
    model.cy = K[5];
    camera.strModel = ReadDistortion(&model);
    if (!model.IsFinite()) Fail(*pMatrix, "the camera is not finite", "finite numbers");
    camera.size = ReadSize(*pMatrix);
    const StorageNode* pId = m_root.Find({"camera_id"});
    camera.uId = pId == nullptr ? 1 : IdOf(*pId, pId->dNumber);
    camera.strName = TextOf({"camera_name"});
    if (camera.strName.empty()) camera.strName = camera.strModel;
    CheckPhotoName(camera.strName, m_file.strName, 0);
    m_block.cameras.push_back(camera);
  }

  ZuImageSize ReadSize(const StorageNode& matrix) const {
    ZuImageSize size{NumberOf({"image_width", "image_Width", "width"}, 0.0),
                     NumberOf({"image_height", "image_Height", "height"}, 0.0)};
    const StorageNode* pSize = m_root.Find({"image_size", "imageSize", "img_size", "resolution"});
    if (size.dWidth == 0.0 && pSize != nullptr) {
      const std::vector<double> sides = TableOf(*pSize, "width and height", 2).values;
      size = {sides[0], sides[1]};
    }
    if (size.dWidth == 0.0) size = m_options.imageSize;
    if (size.dWidth == 0.0) {
      Fail(matrix, "the file has no image_width and image_height", "both, or --image-size W,H");
    }
    CheckImageSize(size, m_file.strName, matrix.uLine);
    return size;
  }

  // Gives the name of the model.
  std::string ReadDistortion(PinholeModel* pModel) const {
    const StorageNode* pNode =
        m_root.Find({"distortion_coefficients", "Distortion_Coefficients", "distCoeffs",
                     "dist_coeffs", "dist_coeff", "distCoefs", "D"});
    std::vector<double> D;
    if (pNode != nullptr) D = TableOf(*pNode).values;
    const std::string strWord = TextOf({"distortion_model"});
    if (strWord == "equidistant" || strWord == "fisheye" ||
        NumberOf({"fisheye_model"}, 0.0) != 0.0) {
      if (D.size() != 4) {
        Fail(pNode == nullptr ? m_root : *pNode,
             std::to_string(D.size()) + " distortion coefficients of a fisheye", "4 of them");
      }
      pModel->eLens = Lens::Equidistant;
      pModel->k = {D[0], D[1], D[2], 0.0, 0.0, 0.0, D[3]};
      return "OPENCV_FISHEYE";
    }
    const std::size_t uNumber = D.size();
    const std::set<std::size_t> sizes{0, 4, 5, 8, 12, 14};
    if (sizes.count(uNumber) == 0) {
      Fail(*pNode, std::to_string(uNumber) + " distortion coefficients", "4, 5, 8, 12 or 14");
    }
    D.resize(14, 0.0);
    pModel->k = {D[0], D[1], D[4], D[5], D[6], D[7], 0.0};
    pModel->p = {D[2], D[3]};
    pModel->s = {D[8], D[9], D[10], D[11]};
    pModel->tau = {D[12], D[13]};
    return "OPENCV_" + std::to_string(uNumber);
  }

  void AddPose(const StorageNode& node, const ZuPoseOpenCv& pose) {
    BlockImage image;
    image.uId = static_cast<unsigned>(m_block.images.size() + 1);
    image.pose = SettledPose(ZuFromOpenCv(pose), [](const ZuCameraPose& there) {
      const ZuPoseOpenCv cv = ZuToOpenCv(there);
      return ZuFromOpenCv(
          {ZuRotationCast<ZuMatrixOpenCv>(ZuRotationCast<ZuVectorOpenCv>(cv.R)), cv.t});
    });
    if (!IsFinitePose(image.pose)) {
      Fail(node, "view " + std::to_string(image.uId) + " has no orientation", "finite numbers");
    }
    m_block.images.push_back(std::move(image));
  }

  void ReadPoses() {
    const StorageNode* pRows = m_root.Find({"extrinsic_parameters", "Extrinsic_Parameters"});
    const StorageNode* pTurns = m_root.Find({"rvecs", "rotation_vectors", "rvec"});
    const StorageNode* pShifts = m_root.Find({"tvecs", "translation_vectors", "tvec"});
    const StorageNode* pR = m_root.Find({"R"});
    const StorageNode* pT = m_root.Find({"T", "t"});
    if (pRows != nullptr) {
      const StorageTable table = TableOf(*pRows);
      if (table.values.size() % 6 != 0) Fail(*pRows, "rows that have not 6 numbers", "6 a view");
      for (std::size_t u = 0; u < table.values.size(); u += 6) {
        const double* p = &table.values[u];
        AddPose(*pRows, {ZuRotationCast<ZuMatrixOpenCv>(ZuVectorOpenCv{{p[0], p[1], p[2]}}),
                         {p[3], p[4], p[5]}});
      }
    } else if (pTurns != nullptr && pShifts != nullptr) {
      const std::vector<double> turns = TableOf(*pTurns).values, shifts = TableOf(*pShifts).values;
      if (turns.size() != shifts.size() || turns.size() % 3 != 0) {
        Fail(*pTurns,
             "has " + std::to_string(turns.size()) + " numbers, and the translations " +
                 std::to_string(shifts.size()),
             "3 a view of each");
      }
      for (std::size_t u = 0; u < turns.size(); u += 3) {
        AddPose(
            *pTurns,
            {ZuRotationCast<ZuMatrixOpenCv>(ZuVectorOpenCv{{turns[u], turns[u + 1], turns[u + 2]}}),
             {shifts[u], shifts[u + 1], shifts[u + 2]}});
      }
    } else if (pR != nullptr && pT != nullptr) {
      const std::vector<double> r = TableOf(*pR).values, t = TableOf(*pT, "3 numbers", 3).values;
      ZuPoseOpenCv pose{{}, {t[0], t[1], t[2]}};
      if (r.size() == 3) {
        pose.R = ZuRotationCast<ZuMatrixOpenCv>(ZuVectorOpenCv{{r[0], r[1], r[2]}});
      } else if (r.size() == 9) {
        std::copy(r.begin(), r.end(), pose.R.r.begin());
        if (!IsRotation(pose.R.r)) Fail(*pR, "R is no rotation", "an orthonormal matrix");
      } else {
        Fail(*pR, "R has " + std::to_string(r.size()) + " numbers", "3 or 9");
      }
      AddPose(*pR, pose);
    }
  }

  // The lists of a node that has one a view: a sequence of matrices or lists, or the rows of a
  // matrix.
  std::vector<std::vector<double>> ListsOf(const StorageNode& node) const {
    std::vector<std::vector<double>> lists;
    if (node.eKind == StorageNode::Kind::Sequence) {
      if (node.children.empty()) lists.push_back(node.numbers);
      for (const StorageNode& child : node.children) lists.push_back(TableOf(child).values);
      return lists;
    }
    const StorageTable table = TableOf(node);
    if (table.uWidth == 0) return lists;
    for (std::size_t u = 0; u < table.values.size(); u += table.uWidth) {
      lists.emplace_back(table.values.begin() + static_cast<std::ptrdiff_t>(u),
                         table.values.begin() + static_cast<std::ptrdiff_t>(u + table.uWidth));
    }
    return lists;
  }

  void AddPoints(const StorageNode& node, const std::vector<double>& values,
                 const std::vector<unsigned>& ids) {
    for (std::size_t u = 0; u < ids.size(); ++u) {
      const BlockPoint point{ids[u], {values[3 * u], values[3 * u + 1], values[3 * u + 2]}};
      if (!std::isfinite(point.X[0] + point.X[1] + point.X[2])) {
        Fail(node, "a point is not finite", "finite numbers");
      }
      if (m_pointIds.insert(point.uId).second) m_block.points.push_back(point);
    }
  }

  // Object points of one list: those of the board.
  void ReadBoard(const StorageNode& node) {
    const std::vector<double> values = TableOf(node).values;
    if (values.size() % 3 != 0) Fail(node, "points that have not 3 coordinates", "3 numbers each");
    std::vector<unsigned> ids;
    const StorageNode* pIds = m_root.Find({"object_point_ids"});
    if (pIds == nullptr) {
      for (unsigned u = 1; u <= values.size() / 3; ++u) ids.push_back(u);
    } else {
      for (const double d : TableOf(*pIds, "one id for each point", values.size() / 3).values) {
        ids.push_back(IdOf(*pIds, d));
      }
    }
    AddPoints(node, values, ids);
  }

  // Of each view; what has the same coordinates is the same point. Gives the ids of the views.
  std::vector<std::vector<unsigned>> ReadViewPoints(const StorageNode& node) {
    std::vector<std::vector<unsigned>> all;
    std::map<std::array<double, 3>, unsigned> known;
    for (const std::vector<double>& values : ListsOf(node)) {
      if (values.size() % 3 != 0)
        Fail(node, "points that have not 3 coordinates", "3 numbers each");
      std::vector<unsigned> ids;
      for (std::size_t u = 0; u < values.size(); u += 3) {
        const auto next = static_cast<unsigned>(known.size() + 1);
        ids.push_back(
            known.try_emplace({values[u], values[u + 1], values[u + 2]}, next).first->second);
      }
      AddPoints(node, values, ids);
      all.push_back(std::move(ids));
    }
    return all;
  }

  // Corners row by row, as OpenCV's programs for calibration make them.
  void MakeBoard() {
    const double dWidth = NumberOf({"board_width", "board_Width"}, 0.0);
    const double dHeight = NumberOf({"board_height", "board_Height"}, 0.0);
    const double dSide = NumberOf({"square_size", "square_Size"}, 0.0);
    constexpr double kMostCorners = 1e4;
    if (!(dWidth >= 1.0 && dHeight >= 1.0 && dWidth * dHeight <= kMostCorners && dSide > 0.0) ||
        !std::isfinite(dSide)) {
      return;
    }
    for (double y = 0.0; y < dHeight; ++y) {
      for (double x = 0.0; x < dWidth; ++x) {
        m_block.points.push_back(
            {static_cast<unsigned>(m_block.points.size() + 1), {x * dSide, y * dSide, 0.0}});
      }
    }
    NoteExchange(m_file.strName,
                 "no object points; those of a chessboard of board_width x board_height corners, "
                 "square_size apart, stand for them",
                 m_pReport);
  }

  void ReadImagePoints() {
    const StorageNode* pImage =
        m_root.Find({"image_points", "imagePoints", "Image_points", "imgpoints"});
    const StorageNode* pObject =
        m_root.Find({"object_points", "objectPoints", "grid_points", "board_points", "objpoints"});
    const StorageNode* pIds = m_root.Find({"point_ids"});
    const std::vector<std::vector<double>> views =
        pImage == nullptr ? std::vector<std::vector<double>>() : ListsOf(*pImage);
    const bool bOwn =
        pObject != nullptr && pObject->eKind == StorageNode::Kind::Sequence &&
        pObject->children.size() == views.size() &&
        std::any_of(pObject->children.begin(), pObject->children.end(),
                    [&](const StorageNode& child) { return TableOf(child).values.size() != 3; });
    std::vector<std::vector<unsigned>> ids;
    if (bOwn) {
      ids = ReadViewPoints(*pObject);
    } else if (pObject != nullptr) {
      ReadBoard(*pObject);
    } else if (pImage != nullptr && pIds == nullptr) {
      MakeBoard();
    }
    if (pImage == nullptr) return;
    if (pIds != nullptr) {
      ids.clear();
      for (const std::vector<double>& list : ListsOf(*pIds)) {
        ids.emplace_back();
        for (const double d : list) ids.back().push_back(IdOf(*pIds, d));
      }
    } else if (!bOwn) {
      std::vector<unsigned> board;
      for (unsigned u = 1; u <= (views.empty() ? 0 : views[0].size() / 2); ++u) board.push_back(u);
      if (!m_block.points.empty() && m_block.points.size() != board.size()) {
        Fail(*pImage,
             "a view has " + std::to_string(board.size()) + " points, and the board " +
                 std::to_string(m_block.points.size()),
             "all of them in each view, or point_ids");
      }
      ids.assign(views.size(), board);
    }
    if (ids.size() != views.size() ||
        (!m_block.images.empty() && views.size() != m_block.images.size())) {
      Fail(*pImage,
           std::to_string(views.size()) + " views with image points, " +
               std::to_string(m_block.images.size()) + " with an orientation and " +
               std::to_string(ids.size()) + " with points",
           "as many of each");
    }
    const bool bOriented = !m_block.images.empty();
    m_block.images.resize(views.size());
    std::size_t uDropped = 0;
    for (std::size_t u = 0; u < views.size(); ++u) {
      BlockImage& image = m_block.images[u];
      image.uId = static_cast<unsigned>(u + 1);
      image.bOriented = bOriented;
      TakeView(*pImage, views[u], ids[u], &image);
      uDropped += DropSecondMeasures(&image);
    }
    WarnSecondMeasures(m_file.strName, uDropped, m_pReport);
  }

  // Coordinates that are not finite stand for a point that was not found.
  void TakeView(const StorageNode& node, const std::vector<double>& pixels,
                const std::vector<unsigned>& ids, BlockImage* pImage) const {
    if (pixels.size() != 2 * ids.size()) {
      Fail(node,
           "view " + std::to_string(pImage->uId) + " has " + std::to_string(pixels.size()) +
               " coordinates of " + std::to_string(ids.size()) + " points",
           "two for each");
    }
    for (std::size_t u = 0; u < ids.size(); ++u) {
      const ZuPixel pixel(pixels[2 * u], pixels[2 * u + 1]);
      if (std::isfinite(pixel.x + pixel.y)) pImage->measures.push_back({ids[u], pixel});
    }
  }

  void ReadNames() {
    const StorageNode* pNames = m_root.Find({"image_names", "image_list", "images"});
    const StorageNode* pIds = m_root.Find({"photo_ids"});
    std::vector<BlockImage>& images = m_block.images;
    std::vector<double> ids;
    if (pIds != nullptr) ids = TableOf(*pIds, "one id a view", images.size()).values;
    const StorageNode one;
    std::set<unsigned> seen;
    for (std::size_t u = 0; u < images.size(); ++u) {
      BlockImage& image = images[u];
      image.strName = "view" + std::to_string(u + 1);
      if (pNames != nullptr && pNames->eKind == StorageNode::Kind::Text && images.size() == 1) {
        image.strName = pNames->strText;
      } else if (pNames != nullptr && pNames->children.size() == images.size()) {
        image.strName = pNames->children[u].strText;
      }
      CheckPhotoName(image.strName, m_file.strName, pNames == nullptr ? 0 : pNames->uLine);
      if (pIds != nullptr) image.uId = IdOf(*pIds, ids[u]);
      if (!seen.insert(image.uId).second) Fail(*pIds, "a photo stands there twice", "each id once");
    }
  }

  const ZuExchangeFile& m_file;
  const ZuImportOptions& m_options;
  ZuExchangeReport* m_pReport;
  StorageNode m_root;
  PhotoBlock m_block;
  std::set<unsigned> m_pointIds;
};

}  // namespace

PhotoBlock ReadOpenCv(const std::vector<ZuExchangeFile>& files, const ZuImportOptions& options,
                      ZuExchangeReport* pReport) {
  return OpenCvReader(OneFile(files), options, pReport).Read();
}

}  // namespace zu::internal
