#include "colour/tables/illuminants.hpp"

namespace qex::vornath {

// Equal energy: the same power at every wavelength.
constinit const GridRow kIlluminantE = [] {
  GridRow row{};
  row.fill(1.0F);
  return row;
}();

// CIE standard illuminant D65, relative spectral power at 400, 405, ..., 700 nm, 100 at 560 nm,
// with the digits of the CIE's publication (CIE 015, Colorimetry; ISO/CIE 11664-2).
const GridRow kIlluminantD65{
    82.7549F, 87.1204F, 91.486F,  92.4589F, 93.4318F, 90.057F,  86.6823F, 95.7736F, 104.865F,
    110.936F, 117.008F, 117.41F,  117.812F, 116.336F, 114.861F, 115.392F, 115.923F, 112.367F,
    108.811F, 109.082F, 109.354F, 108.578F, 107.802F, 106.296F, 104.79F,  106.239F, 107.689F,
    106.047F, 104.405F, 104.225F, 104.046F, 102.023F, 100.0F,   98.1671F, 96.3342F, 96.0611F,
    95.788F,  92.2368F, 88.6856F, 89.3459F, 90.0062F, 89.8026F, 89.5991F, 88.6489F, 87.6987F,
    85.4936F, 83.2886F, 83.4939F, 83.6992F, 81.863F,  80.0268F, 80.1207F, 80.2146F, 81.2462F,
    82.2778F, 80.281F,  78.2842F, 74.0027F, 69.7213F, 70.6652F, 71.6091F,
};

}  // namespace qex::vornath
