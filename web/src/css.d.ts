declare module '*.css';
