// zelplayer.js: plays SWF movies in a <canvas> with the zelEngine WebAssembly
// module. Compressed movies are inflated by the browser, the engine draws
// each frame into its own memory, and only the rectangles a frame changed
// are copied into the canvas. Device text goes through the canvas text API.
//
//   import { ZelPlayer } from './zelplayer.js';
//   const p = await ZelPlayer.create(canvas);
//   await p.load(await (await fetch('movie.swf')).arrayBuffer());
//   p.play();
//
// ZelPlayer: load(bytes), play(), pause(), step(), restart(), setOrientation(q),
// frame, frameCount, frameRate, width/height (the movie's size in CSS pixels),
// playing, onload(), onframe(frame), ontext(record) (each device text drawn,
// e.g. for assistive technology). The canvas keeps its CSS size; its
// backing store follows that size times devicePixelRatio.
// MovieView is the same engine driving without a canvas (Node, workers).
import createZelEngine from './zelengine.js';

// A movie the player cannot show; message says why, in a sentence.
export class MovieError extends Error {}

const kPlayRepaintChanged = 0;
const kPlayNewCanvas = 1;
const kPlayRepaintAll = 2;
const kMaxMovieBytes = 256 * 1024 * 1024;
const kSetBackgroundColor = 9;

// One engine module serves every player of the page. Outside a browser,
// options.wasmBinary hands over the bytes of zelengine.wasm.
let modulePromise = null;
function engineModule(options) {
  if (!modulePromise) modulePromise = createZelEngine(options);
  return modulePromise;
}

function readU32(d, at) {
  return (d[at] | d[at + 1] << 8 | d[at + 2] << 16 | d[at + 3] << 24) >>> 0;
}

// The frame RECT after the 8 fixed header bytes, in twips; null when cut short.
function readRect(d, offset) {
  if (offset >= d.length) return null;
  const nbits = d[offset] >> 3;
  const bytes = (5 + 4 * nbits + 7) >> 3;
  if (d.length - offset < bytes) return null;
  let bit = 5;
  const field = () => {
    let v = 0;
    for (let i = 0; i < nbits; ++i, ++bit) v = v * 2 + ((d[offset + (bit >> 3)] >> (7 - (bit & 7))) & 1);
    return nbits > 0 && v >= 2 ** (nbits - 1) ? v - 2 ** nbits : v;
  };
  const left = field(), right = field(), top = field(), bottom = field();
  return { rect: { left, right, top, bottom }, next: offset + bytes };
}

async function inflate(file, declared) {
  if (declared < 8) throw new MovieError('header declares an impossible length');
  if (declared > kMaxMovieBytes) {
    throw new MovieError(`header declares ${declared} bytes once inflated, more than the 256 MiB limit`);
  }
  if (typeof DecompressionStream !== 'function') {
    throw new MovieError('this browser cannot inflate compressed movies (no DecompressionStream)');
  }
  const out = new Uint8Array(declared);
  out.set(file.subarray(0, 8));
  out[0] = 0x46; // 'F'
  let produced = 8;
  const reader = new Blob([file.subarray(8)]).stream().pipeThrough(new DecompressionStream('deflate')).getReader();
  try {
    for (;;) {
      const { done, value } = await reader.read();
      if (done) break;
      if (produced + value.length > declared) {
        throw new MovieError("compressed data inflates to more than the header's declared length");
      }
      out.set(value, produced);
      produced += value.length;
    }
  } catch (e) {
    if (e instanceof MovieError) throw e;
    throw new MovieError(`corrupt or cut short compressed data (${produced} of ${declared} bytes inflated)`);
  }
  if (produced !== declared) {
    throw new MovieError(`compressed data inflates to ${produced} bytes, the header declares ${declared}`);
  }
  return out;
}

// The first top-level SetBackgroundColor, as red, green, blue; white without one.
function findBackground(d, firstTag) {
  let at = firstTag;
  while (at + 2 <= d.length) {
    const word = d[at] | d[at + 1] << 8;
    let length = word & 0x3f;
    at += 2;
    if (length === 0x3f) {
      if (at + 4 > d.length) break;
      length = readU32(d, at);
      at += 4;
    }
    const code = word >> 6;
    if (code === 0) break;
    if (code === kSetBackgroundColor && length >= 3 && at + 3 <= d.length) return [d[at], d[at + 1], d[at + 2]];
    at += length;
  }
  return [255, 255, 255];
}

// Checks the header and inflates a CWS body: the uncompressed movie and its
// frame rectangle, or a MovieError that says what is wrong.
export async function readMovie(bytes) {
  let d = bytes instanceof Uint8Array ? bytes : new Uint8Array(bytes);
  if (d.length > kMaxMovieBytes) throw new MovieError('file is larger than the 256 MiB limit');
  if (d.length < 3 || d[1] !== 0x57 || d[2] !== 0x53 || (d[0] !== 0x46 && d[0] !== 0x43)) {
    throw new MovieError('not a SWF movie (no FWS or CWS signature)');
  }
  if (d.length < 8) throw new MovieError('header is cut short');
  const compressed = d[0] === 0x43;
  if (compressed) d = await inflate(d, readU32(d, 4));
  const header = readRect(d, 8);
  if (!header || d.length - header.next < 4) throw new MovieError('header is cut short');
  const declared = readU32(d, 4);
  if (!compressed && declared > d.length) {
    throw new MovieError(`truncated: header declares ${declared} bytes, the file has ${d.length}`);
  }
  return { data: d, frame: header.rect, background: findBackground(d, header.next + 4) };
}

// std::lround: halves away from zero.
function roundHalfAway(x) {
  return Math.sign(x) * Math.round(Math.abs(x));
}

// Where the (possibly turned) movie lands in a width x height image: the
// engine fits it by its own rule, and the origin moves the turned frame
// back inside the image, centred when the aspect ratios differ.
function fitOrigin(frame, movieW, movieH, width, height, orientation) {
  const turned = orientation & 1;
  const rotatedW = turned ? movieH : movieW, rotatedH = turned ? movieW : movieH;
  const zoom = rotatedW * height > rotatedH * width ? width / rotatedW : height / rotatedH;
  const stageW = Math.floor(rotatedW * zoom + 0.5), stageH = Math.floor(rotatedH * zoom + 0.5);
  const turn = [[1, 0, 0, 1], [0, 1, -1, 0], [-1, 0, 0, -1], [0, -1, 1, 0]][orientation & 3];
  let minX = Infinity, minY = Infinity;
  for (const x of [frame.left, frame.right]) {
    for (const y of [frame.top, frame.bottom]) {
      minX = Math.min(minX, zoom * (turn[0] * x + turn[1] * y));
      minY = Math.min(minY, zoom * (turn[2] * x + turn[3] * y));
    }
  }
  return [roundHalfAway(-minX / 20 + (width - stageW) / 2), roundHalfAway(-minY / 20 + (height - stageH) / 2)];
}

// One movie driven frame by frame into straight RGBA pixels, no DOM needed.
export class MovieView {
  static async create(options = {}) {
    return new MovieView(await engineModule(options));
  }

  constructor(module) {
    this.m = module;
    this.engine = 0;
    this.moviePtr = 0;
    this.pixels = 0; // premultiplied ARGB words, the engine's canvas
    this.rgbaPtr = 0; // straight RGBA bytes, what the canvas gets
    this.scratch = module._malloc(8);
    this.width = 0;
    this.height = 0;
    this.orientation = 0;
    this.frame = 0;
    this.frameCount = 0;
    this.frameRate = 0;
    this.movieWidth = 0;
    this.movieHeight = 0;
    this.textPainter = null; // (record, view) => void, draws device text into pixels
  }

  // Opens a movie (ArrayBuffer or Uint8Array); the previous one stays open
  // when this one cannot be read.
  async load(bytes) {
    const movie = await readMovie(bytes);
    const m = this.m;
    const ptr = m._malloc(movie.data.length);
    if (!ptr) throw new MovieError('not enough memory for this movie');
    m.HEAPU8.set(movie.data, ptr);
    const engine = m._zelEngineOpen(ptr, movie.data.length);
    if (!engine) {
      m._free(ptr);
      throw new MovieError('the engine cannot open this movie');
    }
    const w = m._zelEngineGetInt(engine, 3), h = m._zelEngineGetInt(engine, 4);
    if (w <= 0 || h <= 0 || w > 65535 || h > 65535) {
      m._zelEngineClose(engine);
      m._free(ptr);
      throw new MovieError(`movie frame of ${w} x ${h} pixels cannot be shown`);
    }
    this.close();
    this.engine = engine;
    this.moviePtr = ptr;
    this.movie = movie;
    this.movieWidth = w;
    this.movieHeight = h;
    this.frameCount = m._zelEngineGetInt(engine, 1);
    this.frameRate = m._zelEngineGetInt(engine, 2) / 256;
    this.frame = 0;
    m._zelWebSetTextDraw(engine);
    if (this.width > 0) this.resize(this.width, this.height, this.orientation);
  }

  close() {
    if (!this.engine) return;
    this.m._zelEngineClose(this.engine);
    this.m._free(this.moviePtr);
    this.engine = this.moviePtr = 0;
  }

  // Sets the image size and the quarter turns; redraws the current frame.
  resize(width, height, orientation = this.orientation) {
    const m = this.m;
    width = Math.max(1, Math.min(16384, Math.round(width)));
    height = Math.max(1, Math.min(16384, Math.round(height)));
    if (width !== this.width || height !== this.height || !this.pixels) {
      m._free(this.pixels);
      m._free(this.rgbaPtr);
      this.pixels = m._malloc(width * height * 4);
      this.rgbaPtr = m._malloc(width * height * 4);
      if (!this.pixels || !this.rgbaPtr) throw new MovieError(`no memory for a ${width} x ${height} image`);
      m.HEAPU8.fill(0, this.pixels, this.pixels + width * height * 4);
    }
    this.width = width;
    this.height = height;
    this.orientation = orientation & 3;
    this.newCanvas = true;
    if (!this.engine) return;
    m._zelEngineFlipCanvas(this.engine, this.orientation);
    const [x, y] = fitOrigin(this.movie.frame, this.movieWidth, this.movieHeight, width, height, this.orientation);
    m._zelEngineSetOrg(this.engine, x, y);
    m._zelEngineForward(this.engine, 0, width, height, 1);
    this.applyBackground();
    if (this.frame > 0) this.draw(true);
  }

  // The movie's SetBackgroundColor runs inside zelEngineForward; setting the
  // colour after every step keeps it (or white) painted under every frame.
  applyBackground() {
    const [r, g, b] = this.movie.background;
    this.m._zelEngineSetBgColor(this.engine, r, g, b, 255);
  }

  // Moves to the next frame and draws it; returns the frame delay in ms.
  advance() {
    if (!this.engine || !this.pixels) return 0;
    this.m._zelEngineForward(this.engine, 1, this.width, this.height, 1);
    ++this.frame;
    this.applyBackground();
    return this.draw(false);
  }

  // Back to before the first frame: the next advance shows frame 1.
  restart() {
    if (!this.engine) return;
    this.m._zelEngineReset(this.engine);
    this.frame = 0;
    this.newCanvas = true;
  }

  // Draws the current frame; this.changed lists the rectangles [l, t, r, b)
  // whose RGBA pixels are new.
  draw(full) {
    const m = this.m, w = this.width, h = this.height;
    full = full || this.newCanvas;
    this.changed = [];
    if (full) {
      this.changed.push([0, 0, w, h]);
    } else {
      const boxes = m._zelEngineGetUpdateBoxes(this.engine, this.scratch, 0);
      const count = boxes ? m.HEAP32[this.scratch >> 2] : 0;
      for (let i = 0; i < count; ++i) {
        const at = (boxes >> 3) + i * 4;
        const clamp = (v, limit) => (v <= 0 ? 0 : v >= limit ? limit : Math.trunc(v));
        const l = clamp(Math.floor(m.HEAPF64[at]), w), t = clamp(Math.floor(m.HEAPF64[at + 1]), h);
        const r = clamp(Math.ceil(m.HEAPF64[at + 2]), w), b = clamp(Math.ceil(m.HEAPF64[at + 3]), h);
        if (l < r && t < b) this.changed.push([l, t, r, b]);
      }
    }
    m.drawText = (record) => this.textPainter && this.textPainter(readTextRecord(m, record), this);
    const mode = this.newCanvas ? kPlayNewCanvas : full ? kPlayRepaintAll : kPlayRepaintChanged;
    const delay = m._zelWebPlay(this.engine, this.pixels, w, h, mode);
    m.drawText = null;
    this.newCanvas = false;
    for (const [l, t, r, b] of this.changed) m._zelWebToRGBA(this.pixels, this.rgbaPtr, w, l, t, r, b);
    return delay;
  }

  // The image as straight RGBA bytes (a view into the module's memory,
  // valid until the next call that allocates).
  rgba() {
    return new Uint8ClampedArray(this.m.HEAPU8.buffer, this.rgbaPtr, this.width * this.height * 4);
  }
}

// The engine's device-text record (nineteen 32-bit words) as an object.
function readTextRecord(m, ptr) {
  const w = (i) => m.HEAP32[(ptr >> 2) + i];
  const bytes = m.HEAPU8.subarray(ptr + 12, ptr + 16);
  const kind = w(6);
  const text = kind === 0 && w(0) ? decodeText(m, w(0)) : '';
  return {
    kind: kind === 1 ? 'border' : 'text',
    text,
    size: w(1),
    fontName: kind === 0 && w(2) ? m.UTF8ToString(w(2)) : '',
    color: [bytes[0], bytes[1], bytes[2], bytes[3]],
    italic: w(4) !== 0,
    bold: w(5) !== 0,
    wordWrap: w(7) !== 0,
    box: [w(8), w(9), w(10), w(11)],
    visible: [w(12), w(13), w(14), w(15)],
    align: w(18),
  };
}

// UTF-8, or Latin-1 for text written by older tools in a single-byte encoding.
function decodeText(m, ptr) {
  let end = ptr;
  while (m.HEAPU8[end]) ++end;
  const bytes = m.HEAPU8.subarray(ptr, end);
  try {
    return new TextDecoder('utf-8', { fatal: true }).decode(bytes);
  } catch {
    return String.fromCharCode(...bytes);
  }
}

const kGutter = 2; // pixels between a field's box and its text
const kGenericFonts = { _sans: 'sans-serif', _serif: 'serif', _typewriter: 'monospace' };

function scratchContext(width, height) {
  const canvas = typeof OffscreenCanvas === 'function'
    ? new OffscreenCanvas(width, height)
    : Object.assign(document.createElement('canvas'), { width, height });
  return canvas.getContext('2d', { willReadFrequently: true });
}

// Greedy word wrap inside avail pixels; a word wider than a line is cut.
function wrapLines(ctx, text, wrap, avail) {
  const lines = [];
  for (const paragraph of text.split(/\r\n|\r|\n/)) {
    if (!wrap) {
      lines.push(paragraph);
      continue;
    }
    let line = '';
    for (const word of paragraph.split(' ')) {
      const next = line ? `${line} ${word}` : word;
      if (!line || ctx.measureText(next).width <= avail) {
        line = next;
      } else {
        lines.push(line);
        line = word;
      }
      while (ctx.measureText(line).width > avail && line.length > 1) {
        let cut = line.length - 1;
        while (cut > 1 && ctx.measureText(line.slice(0, cut)).width > avail) --cut;
        lines.push(line.slice(0, cut));
        line = line.slice(cut);
      }
    }
    lines.push(line);
  }
  return lines;
}

// Draws a device-text record with the canvas text API on a scratch canvas
// the size of the visible box, then blends it into the engine's pixels, so
// the field sits at its depth among the shapes drawn after it.
export function paintDeviceText(record, view) {
  const left = Math.max(record.visible[0], 0), top = Math.max(record.visible[1], 0);
  const right = Math.min(record.visible[2], view.width), bottom = Math.min(record.visible[3], view.height);
  if (left >= right || top >= bottom) return;
  const [bl, bt, br, bb] = record.box;
  const ctx = scratchContext(right - left, bottom - top);
  ctx.translate(-left, -top);
  if (record.kind === 'border') {
    // No colours come with a border: a white field in a one-pixel black frame.
    if (bl >= br || bt >= bb) return;
    ctx.fillStyle = '#fff';
    ctx.fillRect(bl, bt, br - bl, bb - bt);
    ctx.fillStyle = '#000';
    ctx.fillRect(bl, bt, br - bl, 1);
    ctx.fillRect(bl, bb - 1, br - bl, 1);
    ctx.fillRect(bl, bt, 1, bb - bt);
    ctx.fillRect(br - 1, bt, 1, bb - bt);
  } else {
    if (!record.text || record.size <= 0 || record.size > 2048) return;
    let [r, g, b, a] = record.color;
    if (r === 0 && g === 0 && b === 0 && a === 0) a = 255; // no colour given: black
    const family = kGenericFonts[record.fontName || '_sans'] || `"${record.fontName}", sans-serif`;
    ctx.font = `${record.italic ? 'italic ' : ''}${record.bold ? 'bold ' : ''}${record.size}px ${family}`;
    ctx.fillStyle = `rgba(${r}, ${g}, ${b}, ${a / 255})`;
    ctx.textBaseline = 'alphabetic';
    ctx.beginPath();
    ctx.rect(bl, bt, br - bl, bb - bt);
    ctx.clip();
    const metrics = ctx.measureText('Hg');
    const ascent = metrics.fontBoundingBoxAscent ?? record.size * 0.8;
    const lineHeight = ascent + (metrics.fontBoundingBoxDescent ?? record.size * 0.2);
    let baseline = bt + kGutter + ascent;
    for (const line of wrapLines(ctx, record.text, record.wordWrap, br - bl - 2 * kGutter)) {
      if (baseline - ascent >= bottom) break;
      const width = ctx.measureText(line).width;
      const x = record.align === 1 ? br - kGutter - width : record.align === 2 ? (bl + br - width) / 2 : bl + kGutter;
      ctx.fillText(line, x, baseline);
      baseline += lineHeight;
    }
  }
  blendInto(view, ctx.getImageData(0, 0, right - left, bottom - top).data, left, top, right, bottom);
}

// Source-over of straight RGBA bytes onto the premultiplied ARGB words.
function blendInto(view, src, left, top, right, bottom) {
  const words = new Uint32Array(view.m.HEAPU8.buffer, view.pixels, view.width * view.height);
  const over = (s, d, a) => Math.round((s * a + d * (255 - a)) / 255);
  let i = 0;
  for (let y = top; y < bottom; ++y) {
    const row = y * view.width;
    for (let x = left; x < right; ++x, i += 4) {
      const a = src[i + 3];
      if (a === 0) continue;
      const d = words[row + x];
      words[row + x] = (over(255, d >>> 24, a) << 24 | over(src[i], (d >>> 16) & 255, a) << 16 |
                        over(src[i + 1], (d >>> 8) & 255, a) << 8 | over(src[i + 2], d & 255, a)) >>> 0;
    }
  }
}

// A movie in a canvas: frames at the movie's rate on requestAnimationFrame
// with deadlines (late frames are caught up, not replayed), and only the
// changed rectangles put into the canvas.
export class ZelPlayer {
  static async create(canvas) {
    return new ZelPlayer(canvas, await MovieView.create());
  }

  constructor(canvas, view) {
    this.canvas = canvas;
    this.ctx = canvas.getContext('2d');
    this.view = view;
    this.onframe = null;
    this.onload = null;
    this.ontext = null;
    this.playing = false;
    this.deadline = 0;
    view.textPainter = (record, v) => {
      paintDeviceText(record, v);
      if (this.ontext) this.ontext(record);
    };
    if (typeof ResizeObserver === 'function') {
      new ResizeObserver((entries) => this.followSize(entries[entries.length - 1])).observe(canvas);
    }
  }

  get frame() { return this.view.frame; }
  get frameCount() { return this.view.frameCount; }
  get frameRate() { return this.view.frameRate; }
  // The movie's own size in CSS pixels, turned with the orientation.
  get width() { return this.view.orientation & 1 ? this.view.movieHeight : this.view.movieWidth; }
  get height() { return this.view.orientation & 1 ? this.view.movieWidth : this.view.movieHeight; }

  // Loads a movie and shows its first frame, paused. Rejects with a
  // MovieError (the current movie stays) when the bytes are not a movie.
  // onload, when set, runs before the first frame is drawn: the place to
  // give the canvas its CSS size for this movie.
  async load(bytes) {
    this.pause();
    await this.view.load(bytes);
    this.canvas.style.aspectRatio = `${this.width} / ${this.height}`;
    if (this.onload) this.onload();
    this.sizeFromCanvas();
    this.step();
  }

  play() {
    if (this.playing || !this.view.engine) return;
    if (this.frame >= this.frameCount) this.restart();
    this.playing = true;
    this.deadline = performance.now();
    const tick = (now) => {
      if (!this.playing) return;
      if (now >= this.deadline) {
        const delay = this.showNext();
        // Behind by more than a frame: start the count again from now.
        this.deadline = now - this.deadline > delay ? now + delay : this.deadline + delay;
      }
      if (this.playing) requestAnimationFrame(tick);
    };
    requestAnimationFrame(tick);
  }

  pause() { this.playing = false; }

  step() {
    if (this.view.engine && this.frame < this.frameCount) this.showNext();
  }

  restart() {
    this.view.restart();
    this.step();
  }

  // Quarter turns, counter-clockwise on screen.
  setOrientation(q) {
    this.view.orientation = q & 3;
    this.canvas.style.aspectRatio = `${this.width} / ${this.height}`;
    this.view.resize(this.view.width || this.width, this.view.height || this.height, q & 3);
    this.sizeFromCanvas();
    this.present();
  }

  showNext() {
    const delay = this.view.advance();
    if (this.frame >= this.frameCount) this.playing = false;
    this.present();
    if (this.onframe) this.onframe(this.frame);
    return delay;
  }

  present() {
    if (!this.view.changed) return;
    const { width, height } = this.view;
    const image = new ImageData(this.view.rgba(), width, height);
    for (const [l, t, r, b] of this.view.changed) this.ctx.putImageData(image, 0, 0, l, t, r - l, b - t);
    this.view.changed = [];
  }

  // The backing store follows the canvas's CSS size in device pixels.
  followSize(entry) {
    const device = entry.devicePixelContentBoxSize && entry.devicePixelContentBoxSize[0];
    const dpr = window.devicePixelRatio || 1;
    const w = device ? device.inlineSize : Math.round(entry.contentRect.width * dpr);
    const h = device ? device.blockSize : Math.round(entry.contentRect.height * dpr);
    this.setBackingSize(w, h);
  }

  sizeFromCanvas() {
    const rect = this.canvas.getBoundingClientRect();
    const dpr = window.devicePixelRatio || 1;
    const w = Math.round(rect.width * dpr) || this.width, h = Math.round(rect.height * dpr) || this.height;
    this.setBackingSize(w, h);
  }

  setBackingSize(w, h) {
    if (w <= 0 || h <= 0 || (w === this.view.width && h === this.view.height && this.canvas.width === w)) return;
    this.canvas.width = w;
    this.canvas.height = h;
    this.view.resize(w, h);
    this.view.changed = [[0, 0, w, h]];
    if (this.frame > 0) this.present();
  }
}
