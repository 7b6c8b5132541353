// What is looked at in every page; each gives a list of faults.

// Pictures that don't show. Those that wait to be scrolled to are fetched.
export function brokenPictures(tab) {
  return tab.evaluate(async () => {
    const faults = [];
    for (const picture of document.images) {
      picture.loading = 'eager';
      await picture.decode().catch(() => {});
      if (picture.naturalWidth === 0) faults.push(`picture ${picture.getAttribute('src')} doesn't show`);
    }
    return faults;
  });
}

// A page wider than the window.
export function sidewaysScrolling(tab) {
  return tab.evaluate(() => {
    const { scrollWidth, clientWidth } = document.documentElement;
    return scrollWidth > clientWidth ? [`${scrollWidth} pixels wide in a window of ${clientWidth}`] : [];
  });
}

// Text that doesn't stand out from what is behind it: a contrast below 4.5, or 3 for large letters,
// as the accessibility guidelines of the W3C compute it.
export function faintText(tab) {
  return tab.evaluate(() => {
    const canvas = document.createElement('canvas');
    canvas.width = canvas.height = 1;
    const brush = canvas.getContext('2d', { willReadFrequently: true });
    const known = new Map();
    const rgba = (colour) => {
      if (!known.has(colour)) {
        brush.clearRect(0, 0, 1, 1);
        brush.fillStyle = colour;
        brush.fillRect(0, 0, 1, 1);
        const [red, green, blue, alpha] = brush.getImageData(0, 0, 1, 1).data;
        known.set(colour, [red, green, blue, alpha / 255]);
      }
      return known.get(colour);
    };
    const over = ([r, g, b, a], under) => [r, g, b].map((value, i) => value * a + under[i] * (1 - a));
    const behind = (element) => {
      const layers = [];
      for (let at = element; at; at = at.parentElement) {
        const layer = rgba(getComputedStyle(at).backgroundColor);
        if (layer[3] > 0) layers.push(layer);
        if (layer[3] === 1) break;
      }
      return layers.reduceRight((under, layer) => over(layer, under), [255, 255, 255]);
    };
    const light = (colour) => {
      const [r, g, b] = colour.map((value) => value / 255).map((v) => (v <= 0.04045 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4));
      return 0.2126 * r + 0.7152 * g + 0.0722 * b;
    };
    const faults = new Set();
    let looked = 0;
    const texts = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
    while (texts.nextNode()) {
      const element = texts.currentNode.parentElement;
      if (!texts.currentNode.data.trim() || !element.checkVisibility({ checkOpacity: true })) continue;
      if (element.closest('script, style, .md-search__output, .md-clipboard, .headerlink')) continue;
      const style = getComputedStyle(element);
      const back = behind(element);
      const [high, low] = [light(over(rgba(style.color), back)), light(back)].sort((a, b) => b - a);
      const contrast = (high + 0.05) / (low + 0.05);
      const size = parseFloat(style.fontSize);
      const large = size >= 24 || (size >= 18.66 && Number(style.fontWeight) >= 700);
      looked += 1;
      if (contrast < (large ? 3 : 4.5))
        faults.add(`“${texts.currentNode.data.trim().slice(0, 40)}” has a contrast of ${contrast.toFixed(2)}: ${style.color}`);
    }
    if (looked === 0) faults.add('no text');
    return [...faults];
  });
}
